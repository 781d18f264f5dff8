#include "agent/wallpaper_agent.h"

#include "agent/complaint.h"
#include "agent/configuration/configuration_file.h"
#include "agent/configuration/output_settings.h"
#include "agent/host_application.h"
#include "agent/memory/memory_file.h"
#include "agent/output/output_backends.h"
#include "platform/linux/gpu/vulkan_instance.h"
#include "platform/notifications.h"
#include "platform/platform.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <utility>

namespace vantor::agent {
namespace {

/// Between the two pictures of a display.
constexpr double kPictureInterval = 1.0;
/// The last picture is taken this long before the end, so that the run's end does not cut it off.
constexpr double kPictureMargin = 0.25;
/// How long the extension may take to answer that it released the wallpapers.
constexpr double kReleaseSeconds = 2.0;

constexpr std::string_view kLocked = "locked";
/// On the desktop: moving and not.
constexpr std::string_view kIdle = "idle";
constexpr std::string_view kDefault = "default";

} // namespace

WallpaperAgent::WallpaperAgent(Platform& platform, MainLoop& loop, RunOptions options)
    : platform_(platform), loop_(loop), options_(std::move(options)),
      choices_(options_.choices, memory_, fingerprintOf),
      gpuAlarm_(loop.alarm([this] { replaceGPU(); })),
      isLocked_(options_.presentationMode == kLocked) {
    if (!isLocked_) {
        unlockedMode_ = options_.presentationMode;
    }
}

WallpaperAgent::~WallpaperAgent() = default;

RunStatus WallpaperAgent::run() {
    for (const int signal : {SIGINT, SIGTERM}) {
        loop_.onSignal(signal, [this](int) { end(RunStatus::done); });
    }
    if (auto started = start(); !started) {
        complain(started.error());
        return RunStatus::failed;
    }
    auto status = static_cast<RunStatus>(loop_.run());
    if (status == RunStatus::done && supervisor_->session() == nullptr) {
        status = RunStatus::extensionEnded;
    }
    printSummary();
    control_.reset();
    // The extension is waited for before its displays go, and they go before their outputs.
    supervisor_.reset();
    const bool troubled = isTroubled();
    shown_.clear();
    backend_.reset();
    return status == RunStatus::done && troubled ? RunStatus::failed : status;
}

Result<Done, std::string> WallpaperAgent::start() {
    if (options_.output.kind != OutputKind::headless) {
        vulkan::enablePresentation();
    }
    // Before the device, for drivers wait without an end for a display server that does not answer.
    auto backend = makeOutputs(loop_, options_.output, options_.refreshRate, outputEvents());
    if (!backend) {
        return Failure{backend.error()};
    }
    backend_ = std::move(*backend);
    auto gpu = vulkan::Context::create();
    if (!gpu) {
        return Failure{gpu.error()};
    }
    gpu_ = *gpu;
    if (options_.out) {
        std::error_code failed;
        std::filesystem::create_directories(*options_.out, failed);
        if (failed) {
            return Failure{options_.out->string() + " cannot be made: " + failed.message()};
        }
    }
    if (auto read = readFiles(); !read) {
        return read;
    }
    conditions_ =
        std::make_unique<SystemConditions>(platform_, loop_, [this] { conditionsChanged(); });
    platform_.notifications().observeDarwin(kHostApplicationChanged, [weak = std::weak_ptr(self_)] {
        if (const auto self = weak.lock()) {
            (*self)->choicesChanged();
        }
    });
    supervisor_ =
        std::make_unique<ExtensionSupervisor>(loop_, extensionLaunch(platform_, options_.extension),
                                              options_.patience, supervisorEvents());
    // All that can be asked about is there now.
    if (auto listens = listen(); !listens) {
        return listens;
    }
    if (auto started = supervisor_->start(); !started) {
        return started;
    }
    if (options_.out) {
        schedulePictures();
    }
    scheduleEnd();
    return Done{};
}

Result<Done, std::string> WallpaperAgent::listen() {
    auto control =
        ControlService::create(loop_, platform_.unifiedLog(), *this, controlSocketFile());
    if (control) {
        control_ = std::move(*control);
        return Done{};
    }
    // One agent has the desktop; others may still show something elsewhere.
    if (control.error().agent && options_.output.kind == OutputKind::background) {
        return Failure{control.error().sentence};
    }
    complain(control.error().sentence + "; this one cannot be asked anything");
    return Done{};
}

Result<Done, std::string> WallpaperAgent::readFiles() {
    memoryFile_ = memoryFile();
    if (memoryFile_) {
        LoadedMemory loaded = loadMemory(*memoryFile_);
        memory_ = std::move(loaded.memory);
        if (loaded.trouble) {
            complain(*loaded.trouble);
        }
    }
    const bool forgets = options_.isClean && !std::exchange(memory_.setAside, {}).empty();
    if (choices_.forgetChanged() || forgets) {
        saveMemory();
    }
    configurationFile_ = options_.configuration ? options_.configuration : configurationFile();
    if (!configurationFile_) {
        return Done{};
    }
    if (auto read = reload(); !read) {
        if (options_.configuration) {
            return read;
        }
        // A mistake in the user's own file is no reason to show nothing.
        complain(read.error());
    }
    auto watch =
        ConfigurationWatch::create(loop_, *configurationFile_, [this] { configurationChanged(); });
    if (!watch) {
        complain(watch.error());
    } else {
        configurationWatch_ = std::move(*watch);
    }
    return Done{};
}

OutputEvents WallpaperAgent::outputEvents() {
    return {
        .added = [this](Output& output) { outputAdded(output); },
        .changed = [this](Output& output) { outputChanged(output); },
        .removed = [this](Output& output) { outputRemoved(output); },
        .refresh = [this](Output& output) { outputRefreshes(output); },
        .command = [this](Output& output, WindowCommand command) { commanded(output, command); },
        .ended =
            [this](const std::string& why) {
                complain(why);
                end(RunStatus::displayServerGone);
            }};
}

SupervisorEvents WallpaperAgent::supervisorEvents() {
    return {.started = [this](ExtensionSession& session) { sessionStarted(session); },
            .died = [this](const std::string& how, double delay,
                           bool setAside) { extensionDied(how, delay, setAside); },
            .attached = [this](std::uint32_t contextID,
                               FileDescriptor socket) { attached(contextID, std::move(socket)); },
            .links = [this](std::uint32_t displayID,
                            std::uint32_t frameRate) { linksRun(displayID, frameRate); },
            .openHostApplication = [this] { openHostApplication(); },
            .pickerChanged = [this](Picker picker) { picker_ = std::move(picker); }};
}

SharedState WallpaperAgent::sharedState() const {
    SharedState state;
    if (isLocked_) {
        state.presentationMode = kLocked;
    } else {
        state.presentationMode =
            unlockedMode_.value_or(std::string(configuration_.animateDesktop ? kIdle : kDefault));
    }
    const Conditions& now = conditions_->current();
    const std::pair<bool, const char*> reasons[] = {
        {isPaused_, "asked"},
        {now.isOnBattery && configuration_.pauseOnBattery, "battery"},
        {now.isAsleep, "asleep"},
        {!now.isSessionActive, "session"}};
    for (const auto& [holds, reason] : reasons) {
        if (holds) {
            state.pauses.emplace_back(reason);
        }
    }
    return state;
}

void WallpaperAgent::apply() {
    for (Output* output : outputs_) {
        const bool isEnabled = settingsFor(configuration_, output->description()).isEnabled;
        const bool isShown = find(*output) != nullptr;
        if (isEnabled && !isShown) {
            show(*output);
        } else if (!isEnabled && isShown) {
            hide(*output);
        }
    }
    for (const auto& shown : shown_) {
        apply(*shown);
    }
}

void WallpaperAgent::apply(ShownOutput& shown) {
    OutputSettings settings = settingsFor(configuration_, shown.output().description());
    if (options_.maxFps) {
        settings.maxFps = std::min(settings.maxFps.value_or(*options_.maxFps), *options_.maxFps);
    }
    shown.apply(sharedState(), choices_.shown(shown.number(), shown.connector(), settings),
                settings, configuration_.pauseWhenCovered);
    if (ExtensionSession* session = supervisor_ ? supervisor_->session() : nullptr;
        session != nullptr && !ending_) {
        shown.tell(*session);
    }
    noteChange();
}

void WallpaperAgent::noteChange() const {
    if (control_) {
        control_->notifyChanged();
    }
}

void WallpaperAgent::saveMemory() {
    if (!memoryFile_) {
        return;
    }
    if (auto saved = agent::saveMemory(*memoryFile_, memory_); !saved) {
        complain(saved.error());
    }
}

void WallpaperAgent::schedulePictures() {
    const double second = options_.seconds.value_or(2 * kPictureInterval) - kPictureMargin;
    loop_.asyncAfter(second - kPictureInterval, [this] { writePictures("a"); });
    loop_.asyncAfter(second, [this] { writePictures("b"); });
}

void WallpaperAgent::writePictures(const char* which) {
    for (const auto& shown : shown_) {
        const auto file =
            *options_.out / ("display-" + std::to_string(shown->number()) + "-" + which + ".png");
        if (!shown->display().writePNG(platform_.images(), file)) {
            complain(file.string() + " cannot be written");
            pictureLost_ = true;
        }
    }
}

void WallpaperAgent::scheduleEnd() {
    if (options_.unlockAfter) {
        loop_.asyncAfter(*options_.unlockAfter, [this] {
            isLocked_ = false;
            unlockedMode_ = kDefault;
            apply();
        });
    }
    if (options_.seconds) {
        loop_.asyncAfter(*options_.seconds, [this] { end(RunStatus::done); });
    }
}

void WallpaperAgent::end(RunStatus status) {
    if (std::exchange(ending_, true)) {
        return;
    }
    const auto stop = [this, status] { loop_.stop(static_cast<int>(status)); };
    ExtensionSession* const session = supervisor_ ? supervisor_->session() : nullptr;
    if (session == nullptr || shown_.empty()) {
        stop();
        return;
    }
    auto left = std::make_shared<std::size_t>(shown_.size());
    for (const auto& shown : shown_) {
        shown->display().release();
        session->invalidate(shown->wallpaper().identifier(),
                            [left, stop](const std::optional<Error>&) {
                                if (--*left == 0) {
                                    stop();
                                }
                            });
    }
    loop_.asyncAfter(kReleaseSeconds, stop);
}

void WallpaperAgent::printSummary() const {
    for (const auto& shown : shown_) {
        const Display& display = shown->display();
        const OutputDescription& output = shown->output().description();
        std::printf("display %u  %ux%u  %-26s  %llu frames", shown->number(), output.width,
                    output.height, shown->shown().choice.c_str(),
                    static_cast<unsigned long long>(display.framesShown()));
        if (display.framesShown() > 1) {
            const double span = display.lastFrame() - *display.firstFrame();
            std::printf("  %.1f a second", static_cast<double>(display.framesShown() - 1) / span);
        }
        std::printf("\n");
    }
    std::fflush(stdout);
    for (const auto& shown : shown_) {
        if (!shown->display().trouble().empty()) {
            complain("display " + std::to_string(shown->number()) + ": " +
                     shown->display().trouble());
        }
    }
}

bool WallpaperAgent::isTroubled() const {
    return pictureLost_ || std::any_of(shown_.begin(), shown_.end(), [](const auto& shown) {
               return !shown->display().trouble().empty();
           });
}

} // namespace vantor::agent
