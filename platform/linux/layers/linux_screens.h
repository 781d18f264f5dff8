#pragma once
// Screens as the agent announces them; their ticks are the agent's. Main thread.

#include "platform/linux/launch/launch_wire.h"
#include "platform/media_clock.h"
#include "platform/screens.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vantor {

class LinuxScreens : public Screens {
  public:
    explicit LinuxScreens(const MediaClock& clock);
    ~LinuxScreens() override;

    std::vector<Screen*> screens() override;

    /// Replaces the screens. Those that stay keep their display links; the links of those that go
    /// deliver nothing any more.
    void setScreens(std::span<const launch::ScreenRecord> records);
    /// The display shows a frame soon: its unpaused links tick.
    void tick(std::uint32_t displayID);

  private:
    class LinuxScreen;
    class Link;

    const MediaClock& clock_;
    std::vector<std::shared_ptr<LinuxScreen>> screens_;
};

} // namespace vantor
