#include "agent/output/wayland/output_info.h"

#include <utility>

namespace vantor::agent::wayland {

const wl_output_listener OutputInfo::kOutputListener = {
    .geometry =
        [](void* data, wl_output*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
           std::int32_t, const char* make, const char* model, std::int32_t transform) {
            auto* const self = static_cast<OutputInfo*>(data);
            self->incoming_.make = make;
            self->incoming_.model = model;
            self->incoming_.transform = transform;
            self->toldUnmarked();
        },
    .mode =
        [](void* data, wl_output*, std::uint32_t flags, std::int32_t width, std::int32_t height,
           std::int32_t refresh) {
            auto* const self = static_cast<OutputInfo*>(data);
            if ((flags & WL_OUTPUT_MODE_CURRENT) != 0) {
                self->incoming_.mode = Extent{width, height};
                self->incoming_.refresh = refresh;
                self->toldUnmarked();
            }
        },
    .done = [](void* data, wl_output*) { static_cast<OutputInfo*>(data)->told(); },
    .scale = [](void* data, wl_output*,
                std::int32_t factor) { static_cast<OutputInfo*>(data)->incoming_.scale = factor; },
    .name = [](void* data, wl_output*,
               const char* name) { static_cast<OutputInfo*>(data)->incoming_.name = name; },
    .description = [](void*, wl_output*, const char*) {},
};

const zxdg_output_v1_listener OutputInfo::kLogicalListener = {
    .logical_position = [](void*, zxdg_output_v1*, std::int32_t, std::int32_t) {},
    .logical_size =
        [](void* data, zxdg_output_v1*, std::int32_t width, std::int32_t height) {
            static_cast<OutputInfo*>(data)->incoming_.logicalSize = Extent{width, height};
        },
    // Up to version 2; later ones end with the output's own mark.
    .done = [](void* data, zxdg_output_v1*) { static_cast<OutputInfo*>(data)->told(); },
    .name =
        [](void* data, zxdg_output_v1*, const char* name) {
            auto& incoming = static_cast<OutputInfo*>(data)->incoming_;
            if (incoming.name.empty()) {
                incoming.name = name;
            }
        },
    .description = [](void*, zxdg_output_v1*, const char*) {},
};

OutputInfo::OutputInfo(Proxy<wl_output> output, zxdg_output_manager_v1* manager)
    : output_(std::move(output)) {
    wl_output_add_listener(output_.get(), &kOutputListener, this);
    if (manager != nullptr) {
        logical_.reset(zxdg_output_manager_v1_get_xdg_output(manager, output_.get()));
        zxdg_output_v1_add_listener(logical_.get(), &kLogicalListener, this);
    }
}

void OutputInfo::told() {
    // An output's own part and its logical size come one after the other at first.
    if (incoming_.mode && (!logical_ || incoming_.logicalSize)) {
        state_ = incoming_;
    }
}

void OutputInfo::toldUnmarked() {
    if (wl_output_get_version(output_.get()) < WL_OUTPUT_DONE_SINCE_VERSION) {
        told();
    }
}

} // namespace vantor::agent::wayland
