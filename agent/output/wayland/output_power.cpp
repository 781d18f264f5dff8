#include "agent/output/wayland/output_power.h"

namespace vantor::agent::wayland {

const zwlr_output_power_v1_listener OutputPower::kListener = {
    .mode =
        [](void* data, zwlr_output_power_v1*, std::uint32_t mode) {
            static_cast<OutputPower*>(data)->isOn_ = mode != ZWLR_OUTPUT_POWER_V1_MODE_OFF;
        },
    // The output has no such control, or another program has it: nothing more is told.
    .failed =
        [](void* data, zwlr_output_power_v1*) {
            auto* const self = static_cast<OutputPower*>(data);
            self->power_.reset();
            self->isOn_ = true;
        },
};

OutputPower::OutputPower(zwlr_output_power_manager_v1* manager, wl_output* output) {
    if (manager != nullptr) {
        power_.reset(zwlr_output_power_manager_v1_get_output_power(manager, output));
        zwlr_output_power_v1_add_listener(power_.get(), &kListener, this);
    }
}

} // namespace vantor::agent::wayland
