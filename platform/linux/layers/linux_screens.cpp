#include "platform/linux/layers/linux_screens.h"

#include <algorithm>
#include <utility>

namespace vantor {

/// A link outlives its screen quietly.
class LinuxScreens::LinuxScreen : public Screen, public std::enable_shared_from_this<LinuxScreen> {
  public:
    LinuxScreen(std::uint32_t number, const MediaClock& clock,
                std::shared_ptr<LinksChanged> linksChanged)
        : number_(number), clock_(clock), linksChanged_(std::move(linksChanged)) {}

    std::optional<std::uint32_t> number() const override { return number_; }
    std::unique_ptr<DisplayLink> displayLink(std::function<void()> tick) override;

    void setRefreshRate(std::uint32_t rate) {
        refreshRate_ = rate;
        linksDiffer();
    }
    void tick();
    void add(Link* link) {
        links_.push_back(link);
        linksDiffer();
    }
    /// Also from within a tick, which goes over the list.
    void remove(const Link* link) {
        std::replace(links_.begin(), links_.end(), const_cast<Link*>(link),
                     static_cast<Link*>(nullptr));
        linksDiffer();
    }
    /// A link was added or removed, paused, or given another rate.
    void linksDiffer();
    /// Says the rate again, to somebody who has not heard it.
    void tellRate() const {
        if (rate_ != 0 && *linksChanged_) {
            (*linksChanged_)(number_, rate_);
        }
    }

  private:
    std::uint32_t number_;
    const MediaClock& clock_;
    std::shared_ptr<LinksChanged> linksChanged_;
    std::uint32_t refreshRate_ = 0;
    /// At which the links run.
    std::uint32_t rate_ = 0;
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

    void setPreferredFrameRateRange(FrameRateRange range) override {
        range_ = range;
        differ();
    }
    void setPaused(bool paused) override {
        paused_ = paused;
        differ();
    }
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

    /// Ticks a second that it wants of a screen of that rate.
    std::uint32_t rate(std::uint32_t refreshRate) const {
        if (paused_) {
            return 0;
        }
        const auto most = static_cast<std::uint32_t>(std::max(range_.maximum, 0.0F));
        return most == 0 ? refreshRate : std::min(most, refreshRate);
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
    void differ() const {
        if (screen_ && added_) {
            screen_->linksDiffer();
        }
    }
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

void LinuxScreens::LinuxScreen::linksDiffer() {
    std::uint32_t rate = 0;
    for (const Link* link : links_) {
        rate = std::max(rate, link != nullptr ? link->rate(refreshRate_) : 0);
    }
    if (std::exchange(rate_, rate) != rate && *linksChanged_) {
        (*linksChanged_)(number_, rate);
    }
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

void LinuxScreens::setLinksChanged(LinksChanged changed) {
    *linksChanged_ = std::move(changed);
    for (const auto& screen : screens_) {
        screen->tellRate();
    }
}

std::shared_ptr<LinuxScreens::LinuxScreen>
LinuxScreens::screenOf(const launch::ScreenRecord& record) {
    const auto isIt = [&record](const auto& screen) {
        return screen && screen->number() == record.displayID;
    };
    if (const auto known = std::find_if(screens_.begin(), screens_.end(), isIt);
        known != screens_.end()) {
        return *known;
    }
    for (const auto& entry : gone_) {
        if (auto screen = entry.lock(); isIt(screen)) {
            // The agent forgot the rate with the screen.
            screen->tellRate();
            return screen;
        }
    }
    return std::make_shared<LinuxScreen>(record.displayID, clock_, linksChanged_);
}

void LinuxScreens::setScreens(std::span<const launch::ScreenRecord> records) {
    std::vector<std::shared_ptr<LinuxScreen>> next;
    for (const launch::ScreenRecord& record : records) {
        next.push_back(screenOf(record));
        next.back()->setRefreshRate(record.refreshRate);
    }
    for (const auto& screen : screens_) {
        if (std::find(next.begin(), next.end(), screen) == next.end()) {
            gone_.push_back(screen);
        }
    }
    screens_ = std::move(next);
    std::erase_if(gone_, [this](const auto& entry) {
        const auto screen = entry.lock();
        return !screen || std::find(screens_.begin(), screens_.end(), screen) != screens_.end();
    });
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
