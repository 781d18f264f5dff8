// What happens to the agent: outputs come and go, the extension starts and dies.

#include "agent/complaint.h"
#include "agent/configuration/output_settings.h"
#include "agent/host_application.h"
#include "agent/memory/memory_file.h"
#include "agent/wallpaper_agent.h"
#include "platform/media_clock.h"
#include "platform/platform.h"
#include "platform/workspace.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace vantor::agent {
namespace {

/// Between two openings of the host application that the extension asks for.
constexpr double kOpenInterval = 1.0;
/// Between two attempts to replace a lost GPU.
constexpr double kReplaceInterval = 1.0;

} // namespace

ShownOutput* WallpaperAgent::find(const Output& output) const {
    const auto found = std::find_if(shown_.begin(), shown_.end(), [&output](const auto& shown) {
        return &shown->output() == &output;
    });
    return found != shown_.end() ? found->get() : nullptr;
}

ShownOutput* WallpaperAgent::find(std::uint32_t number) const {
    const auto found = std::find_if(shown_.begin(), shown_.end(), [number](const auto& shown) {
        return shown->number() == number;
    });
    return found != shown_.end() ? found->get() : nullptr;
}

std::uint32_t WallpaperAgent::numberOf(const Output& output) {
    const std::string& connector = output.description().connector;
    if (options_.output.kind != OutputKind::background) {
        return displayNumber(runNumbers_, connector);
    }
    const AgentMemory before = memory_;
    const std::uint32_t number = displayNumber(memory_, connector);
    if (memory_ != before) {
        saveMemory();
    }
    return number;
}

void WallpaperAgent::outputAdded(Output& output) {
    if (outputs_.size() == launch::kMaxScreens) {
        complain(output.description().connector +
                 " is left alone: " + std::to_string(launch::kMaxScreens) + " outputs are served");
        return;
    }
    outputs_.push_back(&output);
    if (settingsFor(configuration_, output.description()).isEnabled && !ending_) {
        show(output);
    }
}

void WallpaperAgent::show(Output& output) {
    const std::uint32_t number = numberOf(output);
    auto display = Display::create(loop_, gpu_, output, [this, number] { tick(number); });
    if (!display) {
        complain(display.error());
        return;
    }
    const auto [identifier, isNew] =
        identifiers_.try_emplace(output.description().connector, UUID::random());
    auto wallpaper = std::make_unique<Wallpaper>(
        identifier->second, Wallpaper::Events{.acquired =
                                                  [this, number](std::uint32_t contextID) {
                                                      if (ShownOutput* shown = find(number)) {
                                                          attach(*shown, contextID);
                                                      }
                                                  },
                                              .refused =
                                                  [this, number](const std::string& why) {
                                                      if (ShownOutput* shown = find(number)) {
                                                          shown->display().setTrouble(why);
                                                      }
                                                  }});
    shown_.push_back(
        std::make_unique<ShownOutput>(output, number, std::move(*display), std::move(wallpaper)));
    announceScreens();
    apply(*shown_.back());
}

void WallpaperAgent::tick(std::uint32_t number) {
    ExtensionSession* const session = supervisor_->session();
    if (session == nullptr || ending_) {
        return;
    }
    session->tick(number);
    ShownOutput* const shown = find(number);
    if (shown != nullptr && shown->display().isFrameOverdue(options_.patience / 2)) {
        // Something to answer for an extension that may hang.
        shown->wallpaper().repeat(*session);
    }
}

void WallpaperAgent::outputChanged(Output& output) {
    ShownOutput* const shown = find(output);
    if (shown == nullptr) {
        return;
    }
    shown->display().outputChanged();
    announceScreens();
    apply(*shown);
}

void WallpaperAgent::outputRemoved(Output& output) {
    std::erase(outputs_, &output);
    if (find(output) != nullptr) {
        hide(output);
    }
}

void WallpaperAgent::hide(Output& output) {
    ShownOutput& shown = *find(output);
    shown.display().release();
    if (ExtensionSession* session = supervisor_ ? supervisor_->session() : nullptr) {
        // The extension keeps it for a while, in case that the output comes back.
        session->invalidate(shown.wallpaper().identifier(), [](const std::optional<Error>&) {});
    }
    std::erase_if(shown_, [&shown](const auto& entry) { return entry.get() == &shown; });
    announceScreens();
    noteChange();
}

void WallpaperAgent::announceScreens() {
    std::vector<launch::ScreenRecord> screens;
    for (const auto& shown : shown_) {
        const OutputDescription& output = shown->output().description();
        screens.push_back({.displayID = shown->number(),
                           .width = output.width,
                           .height = output.height,
                           .refreshRate = static_cast<std::uint32_t>(
                               std::clamp(std::lround(output.refreshRate), 1L, 1000L))});
    }
    if (supervisor_) {
        supervisor_->setScreens(std::move(screens));
    }
}

void WallpaperAgent::outputRefreshes(Output& output) {
    ShownOutput* const shown = find(output);
    if (shown == nullptr) {
        return;
    }
    shown->display().refresh();
    if (gpu_->isLost()) {
        // Not now: the display is in use.
        gpuAlarm_->set(0);
    }
}

void WallpaperAgent::replaceGPU() {
    auto gpu = vulkan::Context::create();
    if (!gpu) {
        gpuAlarm_->set(kReplaceInterval);
        return;
    }
    complain("the GPU was lost, and is used anew");
    shown_.clear();
    gpu_ = *gpu;
    apply();
}

void WallpaperAgent::sessionStarted(ExtensionSession& session) {
    attaching_.clear();
    for (const auto& shown : shown_) {
        shown->wallpaper().forget();
        shown->tell(session);
    }
    noteChange();
}

void WallpaperAgent::extensionDied(const std::string& how, double delay, bool setAside) {
    complain("the extension " + how + "; it is started again in " + inSeconds(delay));
    for (const auto& shown : shown_) {
        // What it showed last stays, and is no trouble while there is a next one.
        shown->display().setLinkRate(0);
        shown->display().setTrouble({});
        shown->setHosted(std::nullopt);
    }
    if (setAside) {
        setAsideWhatIsShown(how);
    }
    noteChange();
}

void WallpaperAgent::setAsideWhatIsShown(const std::string& how) {
    bool changed = false;
    for (const auto& shown : shown_) {
        const std::string choice = shown->shown().entry;
        std::string reason = choice;
        reason.append(" is set aside until it changes: the extension ended again and again while "
                      "it was shown, and last ");
        reason.append(how);
        if (choices_.setAside(shown->connector(), choice, reason)) {
            changed = true;
            std::string sentence = shown->connector();
            sentence.append(" shows ").append(kSafeChoice).append(", for ").append(reason);
            complain(sentence);
        }
    }
    if (changed) {
        saveMemory();
        apply();
    }
}

void WallpaperAgent::attach(ShownOutput& shown, std::uint32_t contextID) {
    if (shown.hosted() == contextID) {
        return;
    }
    attaching_.emplace_back(contextID, shown.number());
    if (!supervisor_->session()->attach(contextID)) {
        shown.display().setTrouble("the extension takes no more records");
    }
}

void WallpaperAgent::attached(std::uint32_t contextID, FileDescriptor socket) {
    const auto found = std::find_if(attaching_.begin(), attaching_.end(),
                                    [&](const auto& entry) { return entry.first == contextID; });
    if (found == attaching_.end()) {
        return;
    }
    ShownOutput* const shown = find(found->second);
    attaching_.erase(found);
    if (shown == nullptr) {
        return;
    }
    if (!socket) {
        shown->display().setTrouble("the extension does not know its own remote context");
        return;
    }
    shown->setHosted(contextID);
    shown->display().host(std::move(socket));
}

void WallpaperAgent::linksRun(std::uint32_t displayID, std::uint32_t frameRate) {
    if (ShownOutput* const shown = find(displayID)) {
        shown->display().setLinkRate(frameRate);
    }
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

} // namespace vantor::agent
