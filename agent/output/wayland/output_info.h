#pragma once
// What the compositor says about one of its outputs, as of its last complete word. Main thread.

#include "agent/output/wayland/proxy.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vantor::agent::wayland {

struct Extent {
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool operator==(const Extent&) const = default;
};

/// Numbers are as they came: nothing has checked them.
struct OutputState {
    std::string name;
    std::string make;
    std::string model;
    /// Pixels of the current mode, before any turning.
    std::optional<Extent> mode;
    /// Thousandths of a hertz; 0 where the compositor does not know.
    std::int32_t refresh = 0;
    std::int32_t transform = WL_OUTPUT_TRANSFORM_NORMAL;
    /// Rounded up where the true one is a fraction.
    std::int32_t scale = 1;
    /// In points, as the picture is seen.
    std::optional<Extent> logicalSize;
};

class OutputInfo {
  public:
    /// `manager` may be null: there is no logical size then.
    OutputInfo(Proxy<wl_output> output, zxdg_output_manager_v1* manager);
    OutputInfo(const OutputInfo&) = delete;
    OutputInfo& operator=(const OutputInfo&) = delete;

    wl_output* output() const { return output_.get(); }
    /// Nothing before the compositor has told everything once.
    const std::optional<OutputState>& state() const { return state_; }

  private:
    static const wl_output_listener kOutputListener;
    static const zxdg_output_v1_listener kLogicalListener;

    void told();
    /// The end of a word from outputs so old that they mark none.
    void toldUnmarked();

    Proxy<wl_output> output_;
    /// Null without a manager.
    Proxy<zxdg_output_v1> logical_;
    OutputState incoming_;
    std::optional<OutputState> state_;
};

} // namespace vantor::agent::wayland
