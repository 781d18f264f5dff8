#include "platform/darwin/darwin_system.h"

#include "platform/darwin/foundation.h"

#import <AppKit/AppKit.h>

/// What a display link is made for: it sends "tick" at every refresh, and keeps this.
@interface VantorTicker : NSObject {
    std::function<void()> _tick;
}
- (instancetype)initWithTick:(std::function<void()>)tick;
- (void)tick;
@end

@implementation VantorTicker

- (instancetype)initWithTick:(std::function<void()>)tick {
    if ((self = [super init])) {
        _tick = std::move(tick);
    }
    return self;
}

- (void)tick {
    _tick();
}

@end

namespace vantor::darwin {
namespace {

class ScreenLink : public DisplayLink {
  public:
    explicit ScreenLink(CADisplayLink* link) : link_(link) {}
    ~ScreenLink() override { [link_ invalidate]; }
    ScreenLink(const ScreenLink&) = delete;
    ScreenLink& operator=(const ScreenLink&) = delete;

    void setPreferredFrameRateRange(FrameRateRange range) override {
        link_.preferredFrameRateRange =
            CAFrameRateRangeMake(range.minimum, range.maximum, range.preferred);
    }
    void setPaused(bool paused) override { link_.paused = paused; }
    void addToMainRunLoop() override {
        [link_ addToRunLoop:NSRunLoop.mainRunLoop forMode:NSRunLoopCommonModes];
    }
    void invalidate() override { [link_ invalidate]; }

  private:
    CADisplayLink* link_;
};

class DarwinScreen : public Screen {
  public:
    explicit DarwinScreen(NSScreen* screen) : screen_(screen) {}

    std::optional<std::uint32_t> number() const override {
        id number = screen_.deviceDescription[@"NSScreenNumber"];
        return [number isKindOfClass:[NSNumber class]]
                   ? std::optional<std::uint32_t>([number unsignedIntValue])
                   : std::nullopt;
    }
    std::unique_ptr<DisplayLink> displayLink(std::function<void()> tick) override {
        VantorTicker* ticker = [[VantorTicker alloc] initWithTick:std::move(tick)];
        CADisplayLink* link = [screen_ displayLinkWithTarget:ticker selector:@selector(tick)];
        return link != nil ? std::make_unique<ScreenLink>(link) : nullptr;
    }

  private:
    NSScreen* screen_;
};

} // namespace

std::vector<Screen*> DarwinScreens::screens() {
    NSArray<NSScreen*>* now = NSScreen.screens;
    if (!listed_ || ![now isEqualToArray:native<NSArray*>(listed_)]) {
        screens_.clear();
        for (NSScreen* screen in now) {
            screens_.push_back(std::make_unique<DarwinScreen>(screen));
        }
        listed_ = nativeRef(now);
    }
    std::vector<Screen*> list;
    for (const auto& screen : screens_) {
        list.push_back(screen.get());
    }
    return list;
}

} // namespace vantor::darwin
