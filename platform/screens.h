#pragma once
// The displays and their refresh clocks. Main thread only.
//   Linux: outputs announced by the agent; ticks are the agent's frame callbacks, so an output that
//   is off or hidden sends none.
//   macOS: NSScreen and CADisplayLink.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantor {

/// Frames per second.
struct FrameRateRange {
    float minimum = 0;
    float maximum = 0;
    float preferred = 0;
    bool operator==(const FrameRateRange&) const = default;
};

/// A display's refresh clock. It starts unpaused but delivers nothing until it is on the run loop.
class DisplayLink {
  public:
    virtual ~DisplayLink() = default;
    virtual void setPreferredFrameRateRange(FrameRateRange range) = 0;
    virtual void setPaused(bool paused) = 0;
    virtual void addToMainRunLoop() = 0;
    /// No tick is delivered after this. Destruction invalidates too.
    virtual void invalidate() = 0;
};

class Screen {
  public:
    virtual ~Screen() = default;
    /// The display identifier; nothing when the system reports none that is readable.
    virtual std::optional<std::uint32_t> number() const = 0;
    /// A link that calls `tick` on the main run loop at every refresh; null when none can be made.
    virtual std::unique_ptr<DisplayLink> displayLink(std::function<void()> tick) = 0;
};

class Screens {
  public:
    virtual ~Screens() = default;
    /// The screens that exist now, the main one first. The pointers hold until the main loop runs
    /// again.
    virtual std::vector<Screen*> screens() = 0;
};

} // namespace vantor
