#pragma once
// Screens as the agent announces them; their ticks are the agent's. Main thread.

#include "platform/linux/launch/launch_wire.h"
#include "platform/media_clock.h"
#include "platform/screens.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace vantor {

class LinuxScreens : public Screens {
  public:
    explicit LinuxScreens(const MediaClock& clock);
    ~LinuxScreens() override;

    std::vector<Screen*> screens() override;

    /// Called with the rate at which a screen's links run, in ticks a second, whenever it is
    /// another one; 0 when none runs.
    using LinksChanged = std::function<void(std::uint32_t displayID, std::uint32_t frameRate)>;
    void setLinksChanged(LinksChanged changed);

    /// Replaces the screens. Those that stay keep their display links; the links of those that go
    /// deliver nothing until a screen of the same number is there again.
    void setScreens(std::span<const launch::ScreenRecord> records);
    /// The display shows a frame soon: its unpaused links tick.
    void tick(std::uint32_t displayID);

  private:
    class LinuxScreen;
    class Link;

    std::shared_ptr<LinuxScreen> screenOf(const launch::ScreenRecord& record);

    const MediaClock& clock_;
    /// Shared with the screens, which links may keep beyond this.
    std::shared_ptr<LinksChanged> linksChanged_ = std::make_shared<LinksChanged>();
    std::vector<std::shared_ptr<LinuxScreen>> screens_;
    /// Those that went while links were left on them.
    std::vector<std::weak_ptr<LinuxScreen>> gone_;
};

} // namespace vantor
