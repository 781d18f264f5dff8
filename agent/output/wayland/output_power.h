#pragma once
// Whether an output is switched on, as far as the compositor tells. Main thread.

#include "agent/output/wayland/proxy.h"

namespace vantor::agent::wayland {

class OutputPower {
  public:
    /// With no manager the output counts as on.
    OutputPower(zwlr_output_power_manager_v1* manager, wl_output* output);
    OutputPower(const OutputPower&) = delete;
    OutputPower& operator=(const OutputPower&) = delete;

    bool isOn() const { return isOn_; }

  private:
    static const zwlr_output_power_v1_listener kListener;

    Proxy<zwlr_output_power_v1> power_;
    bool isOn_ = true;
};

} // namespace vantor::agent::wayland
