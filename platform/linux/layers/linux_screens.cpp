#include "platform/linux/layers/linux_screens.h"

#include <algorithm>
#include <utility>

namespace vantor {

/// A link outlives its screen quietly.
class LinuxScreens::LinuxScreen : public Screen, public std::enable_shared_from_this<LinuxScreen> {
  public:
    LinuxScreen(std::uint32_t number, const MediaClock& clock) : number_(number), clock_(clock) {}

    std::optional<std::uint32_t> number() const override { return number_; }
    std::unique_ptr<DisplayLink> displayLink(std::function<void()> tick) override;

    void tick();
    void add(Link* link) { links_.push_back(link); }
    /// Also from within a tick, which goes over the list.
    void remove(const Link* link) {
        std::replace(links_.begin(), links_.end(), const_cast<Link*>(link),
                     static_cast<Link*>(nullptr));
    }

  private:
    std::uint32_t number_;
    const MediaClock& clock_;
    /// Null where one was removed; tidied up at the end of a tick.
    std::vector<Link*> links_;
};

class LinuxScreens::Link : public DisplayLink {
  public:
    Link(std::shared_ptr<LinuxScreen> screen, std::function<void()> tick)
        : screen_(std::move(screen)),
          tick_(std::make_shared<std::function<void()>>(std::move(tick))) {}
    ~Link() override { invalidate(); }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    void setPreferredFrameRateRange(FrameRateRange range) override { range_ = range; }
    void setPaused(bool paused) override { paused_ = paused; }
    void addToMainRunLoop() override {
        if (screen_ && !added_) {
            added_ = true;
            screen_->add(this);
        }
    }
    void invalidate() override {
        if (const auto screen = std::exchange(screen_, nullptr); screen && added_) {
            screen->remove(this);
        }
    }

    void tick(double now) {
        if (paused_ || isTooEarly(now)) {
            return;
        }
        // The callback may drop the link.
        const auto callback = tick_;
        (*callback)();
    }

  private:
    /// Thins a faster display to the preferred rate; a quarter of a period's jitter passes.
    bool isTooEarly(double now) {
        if (range_.maximum <= 0) {
            return false;
        }
        const double period = 1.0 / static_cast<double>(range_.maximum);
        if (now + period / 4 < due_) {
            return true;
        }
        due_ = std::max(due_ + period, now);
        return false;
    }

    std::shared_ptr<LinuxScreen> screen_;
    std::shared_ptr<std::function<void()>> tick_;
    FrameRateRange range_;
    bool paused_ = false;
    bool added_ = false;
    double due_ = 0;
};

std::unique_ptr<DisplayLink> LinuxScreens::LinuxScreen::displayLink(std::function<void()> tick) {
    return std::make_unique<Link>(shared_from_this(), std::move(tick));
}

void LinuxScreens::LinuxScreen::tick() {
    const auto self = shared_from_this();
    const double now = clock_.now();
    // By index: a tick may add links.
    for (std::size_t i = 0; i < links_.size(); ++i) {
        if (Link* link = links_[i]) {
            link->tick(now);
        }
    }
    std::erase(links_, nullptr);
}

LinuxScreens::LinuxScreens(const MediaClock& clock) : clock_(clock) {}

LinuxScreens::~LinuxScreens() = default;

std::vector<Screen*> LinuxScreens::screens() {
    std::vector<Screen*> out;
    out.reserve(screens_.size());
    for (const auto& screen : screens_) {
        out.push_back(screen.get());
    }
    return out;
}

void LinuxScreens::setScreens(std::span<const launch::ScreenRecord> records) {
    std::vector<std::shared_ptr<LinuxScreen>> next;
    for (const launch::ScreenRecord& record : records) {
        const auto known =
            std::find_if(screens_.begin(), screens_.end(), [&record](const auto& screen) {
                return screen->number() == record.displayID;
            });
        next.push_back(known != screens_.end()
                           ? *known
                           : std::make_shared<LinuxScreen>(record.displayID, clock_));
    }
    screens_ = std::move(next);
}

void LinuxScreens::tick(std::uint32_t displayID) {
    for (const auto& screen : screens_) {
        if (screen->number() == displayID) {
            // A tick may replace the list of screens.
            const auto kept = screen;
            kept->tick();
            return;
        }
    }
}

} // namespace vantor
