#include "agent/wallpaper_agent.h"

#include "platform/images.h"
#include "platform/linux/gpu/vulkan_context.h"
#include "platform/media_clock.h"
#include "platform/platform.h"
#include "platform/workspace.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace vantor::agent {
namespace {

/// Between the two pictures of a display.
constexpr double kPictureInterval = 1.0;
/// The last picture is taken this long before the end, so that the run's end does not cut it off.
constexpr double kPictureMargin = 0.25;
/// How long the extension may take to answer that it released the wallpapers.
constexpr double kReleaseSeconds = 2.0;
/// Between two openings of the host application that the extension asks for.
constexpr double kOpenInterval = 1.0;

void complain(const std::string& sentence) {
    std::fprintf(stderr, "vantor-agent: %s\n", sentence.c_str());
}

} // namespace

WallpaperAgent::WallpaperAgent(Platform& platform, MainLoop& loop, RunOptions options)
    : platform_(platform), loop_(loop), options_(std::move(options)) {}

WallpaperAgent::~WallpaperAgent() = default;

RunStatus WallpaperAgent::run() {
    for (const int signal : {SIGINT, SIGTERM}) {
        loop_.onSignal(signal, [this](int) { end(RunStatus::done); });
    }
    if (auto started = start(); !started) {
        complain(started.error());
        return RunStatus::failed;
    }
    const auto status = static_cast<RunStatus>(loop_.run());
    refreshTimer_.reset();
    printSummary();
    // The extension is waited for before its displays go.
    session_.reset();
    const bool troubled =
        pictureLost_ || std::any_of(displays_.begin(), displays_.end(), [](const auto& display) {
            return !display->trouble().empty();
        });
    return status == RunStatus::done && troubled ? RunStatus::failed : status;
}

Result<Done, std::string> WallpaperAgent::start() {
    if (auto made = makeDisplays(); !made) {
        return made;
    }
    std::vector<launch::ScreenRecord> screens;
    for (const auto& display : displays_) {
        screens.push_back({.displayID = display->number(),
                           .width = display->mode().width,
                           .height = display->mode().height,
                           .refreshRate = options_.refreshRate});
    }
    auto session = ExtensionSession::start(
        loop_, extensionLaunch(platform_, options_.extension), screens,
        {.attached = [this](std::uint32_t contextID,
                            FileDescriptor socket) { attached(contextID, std::move(socket)); },
         .ended =
             [this](const std::string& how) {
                 complain("the extension " + how);
                 loop_.stop(static_cast<int>(RunStatus::extensionEnded));
             },
         .openHostApplication = [this] { openHostApplication(); }});
    if (!session) {
        return Failure{session.error()};
    }
    session_ = std::move(*session);
    for (const auto& display : displays_) {
        acquire(*display);
    }
    refreshTimer_ = loop_.repeatingTimer(1.0 / options_.refreshRate, [this] { refresh(); });
    if (options_.out) {
        std::error_code failed;
        std::filesystem::create_directories(*options_.out, failed);
        if (failed) {
            return Failure{options_.out->string() + " cannot be made: " + failed.message()};
        }
        schedulePictures();
    }
    if (options_.unlockAfter) {
        loop_.asyncAfter(*options_.unlockAfter, [this] { unlock(); });
    }
    scheduleEnd();
    return Done{};
}

Result<Done, std::string> WallpaperAgent::makeDisplays() {
    auto gpu = vulkan::Context::create();
    if (!gpu) {
        return Failure{gpu.error()};
    }
    for (std::size_t i = 0; i < options_.displays.size(); ++i) {
        const auto number = static_cast<std::uint32_t>(i + 1);
        const auto chosen = options_.choices.find(number);
        auto display = Display::create(
            loop_, *gpu, number, options_.displays[i],
            chosen != options_.choices.end() ? chosen->second : std::string(kDefaultChoice));
        if (!display) {
            return Failure{"the GPU has no memory for display " + std::to_string(number)};
        }
        displays_.push_back(std::move(display));
    }
    return Done{};
}

void WallpaperAgent::acquire(Display& display) {
    session_->acquire(display.wallpaper(),
                      {.configuration = display.choice(),
                       .size = display.size(),
                       .scaleFactor = display.mode().scale,
                       .directDisplayID = display.number(),
                       .isPreview = false,
                       .presentationMode = options_.presentationMode,
                       .activityState = "active",
                       .cacheDirectory = std::nullopt},
                      [this, &display](const Result<std::uint32_t, std::string>& contextID) {
                          if (!contextID) {
                              display.setTrouble(contextID.error());
                              return;
                          }
                          attaching_.emplace_back(contextID.value(), &display);
                          if (!session_->attach(contextID.value())) {
                              display.setTrouble("the extension takes no more records");
                          }
                      });
}

void WallpaperAgent::attached(std::uint32_t contextID, FileDescriptor socket) {
    const auto found = std::find_if(attaching_.begin(), attaching_.end(),
                                    [&](const auto& entry) { return entry.first == contextID; });
    if (found == attaching_.end()) {
        return;
    }
    Display* const display = found->second;
    attaching_.erase(found);
    if (!socket) {
        display->setTrouble("the extension does not know its own remote context");
        return;
    }
    display->host(std::move(socket));
}

void WallpaperAgent::openHostApplication() {
    // However often it asks, an extension does not fill the screen with windows.
    const double now = platform_.mediaClock().now();
    if (now - hostApplicationOpened_ < kOpenInterval) {
        return;
    }
    hostApplicationOpened_ = now;
    Workspace& workspace = platform_.workspace();
    if (const auto location = workspace.applicationLocation(kHostApplication)) {
        workspace.openApplication(*location);
    }
}

void WallpaperAgent::refresh() {
    for (const auto& display : displays_) {
        display->refresh();
        if (!ending_) {
            session_->tick(display->number());
        }
    }
}

void WallpaperAgent::schedulePictures() {
    const double second = options_.seconds.value_or(2 * kPictureInterval) - kPictureMargin;
    loop_.asyncAfter(second - kPictureInterval, [this] { writePictures("a"); });
    loop_.asyncAfter(second, [this] { writePictures("b"); });
}

void WallpaperAgent::writePictures(const char* which) {
    for (const auto& display : displays_) {
        const auto file =
            *options_.out / ("display-" + std::to_string(display->number()) + "-" + which + ".png");
        if (!display->writePNG(platform_.images(), file)) {
            complain(file.string() + " cannot be written");
            pictureLost_ = true;
        }
    }
}

void WallpaperAgent::unlock() {
    for (const auto& display : displays_) {
        session_->update(display->wallpaper(),
                         {.presentationMode = "default",
                          .activityState = "active",
                          .size = display->size(),
                          .scaleFactor = display->mode().scale},
                         [shown = display.get()](const std::optional<Error>& error) {
                             if (error) {
                                 shown->setTrouble(error->message);
                             }
                         });
    }
}

void WallpaperAgent::scheduleEnd() {
    if (options_.seconds) {
        loop_.asyncAfter(*options_.seconds, [this] { end(RunStatus::done); });
    }
}

void WallpaperAgent::end(RunStatus status) {
    if (std::exchange(ending_, true)) {
        return;
    }
    const auto stop = [this, status] { loop_.stop(static_cast<int>(status)); };
    auto left = std::make_shared<std::size_t>(displays_.size());
    for (const auto& display : displays_) {
        display->release();
        session_->invalidate(display->wallpaper(), [left, stop](const std::optional<Error>&) {
            if (--*left == 0) {
                stop();
            }
        });
    }
    loop_.asyncAfter(kReleaseSeconds, stop);
}

void WallpaperAgent::printSummary() const {
    for (const auto& display : displays_) {
        std::printf("display %u  %ux%u  %-26s  %llu frames", display->number(),
                    display->mode().width, display->mode().height, display->choice().c_str(),
                    static_cast<unsigned long long>(display->framesShown()));
        if (display->framesShown() > 1) {
            const double span = display->lastFrame() - *display->firstFrame();
            std::printf("  %.1f a second", static_cast<double>(display->framesShown() - 1) / span);
        }
        std::printf("\n");
    }
    std::fflush(stdout);
    for (const auto& display : displays_) {
        if (!display->trouble().empty()) {
            complain("display " + std::to_string(display->number()) + ": " + display->trouble());
        }
    }
}

} // namespace vantor::agent
