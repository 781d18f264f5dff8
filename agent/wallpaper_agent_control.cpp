// What is asked of the agent: by keys, by commands and by other programs.

#include "agent/complaint.h"
#include "agent/configuration/configuration_file.h"
#include "agent/wallpaper_agent.h"
#include "platform/media_clock.h"
#include "platform/platform.h"

#include <algorithm>
#include <fstream>
#include <unistd.h>
#include <utility>

namespace vantor::agent {
namespace {

/// Resident bytes of a process; 0 when it is gone (proc_pid_statm(5)).
std::uint64_t residentBytes(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    std::uint64_t total = 0;
    std::uint64_t resident = 0;
    file >> total >> resident;
    return file ? resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) : 0;
}

/// The entries of the picker, in its order.
std::vector<std::string> entries(const Picker& picker) {
    std::vector<std::string> all;
    for (const PickerGroup& group : picker.desktop) {
        for (const PickerItem& item : group.items) {
            all.push_back(item.configuration);
        }
    }
    return all;
}

bool isOffered(const Picker& picker, std::string_view entry) {
    const auto offered = entries(picker);
    return entry == kNoChoice || std::find(offered.begin(), offered.end(), entry) != offered.end();
}

std::string notOffered(std::string_view entry) {
    return "the extension offers no entry \"" + std::string(entry) + "\"";
}

} // namespace

AgentStatus WallpaperAgent::status() const {
    AgentStatus status{.version = VANTOR_VERSION,
                       .pid = getpid(),
                       .outputKind = std::string(backend_->kind()),
                       .isLocked = isLocked_,
                       .isPaused = isPaused_,
                       .isOnBattery = conditions_->current().isOnBattery,
                       .memory = residentBytes(getpid()),
                       .extension = {.pid = std::nullopt,
                                     .restarts = supervisor_->restarts(),
                                     .lastEnd = supervisor_->lastEnd(),
                                     .memory = 0},
                       .outputs = {},
                       .configurationError = configurationError_};
    if (const ExtensionSession* session = supervisor_->session()) {
        status.extension.pid = session->processIdentifier();
        status.extension.memory = residentBytes(session->processIdentifier());
    }
    const double now = platform_.mediaClock().now();
    for (const auto& shown : shown_) {
        status.outputs.push_back(shown->status(now));
    }
    return status;
}

void WallpaperAgent::picker(std::function<void(Result<Picker, std::string>)> done) {
    if (picker_) {
        done(*picker_);
        return;
    }
    ExtensionSession* const session = supervisor_->session();
    if (session == nullptr) {
        done(Failure{std::string("the extension does not run now")});
        return;
    }
    session->picker([this, done = std::move(done)](Result<Picker, std::string> picker) {
        if (picker) {
            // From now on the extension's own word keeps it up to date.
            picker_ = picker.value();
        }
        done(std::move(picker));
    });
}

ShownOutput* WallpaperAgent::named(std::string_view output) const {
    const auto found = std::find_if(shown_.begin(), shown_.end(), [output](const auto& shown) {
        return shown->connector() == output || std::to_string(shown->number()) == output;
    });
    return found != shown_.end() ? found->get() : nullptr;
}

Result<Done, std::string> WallpaperAgent::choose(std::string_view output, std::string_view entry) {
    ShownOutput* const shown = named(output);
    if (shown == nullptr) {
        return Failure{"there is no output \"" + std::string(output) + "\""};
    }
    if (entry.empty()) {
        return Failure{std::string("an entry needs a name")};
    }
    if (picker_ && !isOffered(*picker_, entry)) {
        return Failure{notOffered(entry)};
    }
    choices_.choose(shown->number(), shown->connector(), entry);
    saveMemory();
    // The trouble of the choice before is none of this one's.
    shown->display().setTrouble({});
    apply(*shown);
    if (!picker_) {
        doubt(*shown, std::string(entry));
    }
    return Done{};
}

void WallpaperAgent::doubt(const ShownOutput& chosen, std::string entry) {
    picker([this, connector = chosen.connector(),
            entry = std::move(entry)](const Result<Picker, std::string>& offered) {
        // The output may have gone, or show something else, while the extension answered.
        ShownOutput* const shown = named(connector);
        if (offered && shown != nullptr && shown->shown().choice == entry &&
            !isOffered(offered.value(), entry)) {
            shown->display().setTrouble(notOffered(entry));
            noteChange();
        }
    });
}

void WallpaperAgent::setLocked(bool locked) {
    isLocked_ = locked;
    apply();
}

void WallpaperAgent::setPaused(bool paused) {
    isPaused_ = paused;
    apply();
}

Result<Done, std::string> WallpaperAgent::reload() {
    if (!configurationFile_) {
        return Failure{std::string("there is no place for a configuration file")};
    }
    auto read = loadConfiguration(*configurationFile_);
    if (!read) {
        configurationError_ = read.error();
        return Failure{read.error()};
    }
    configurationError_.clear();
    configuration_ = std::move(*read);
    if (conditions_) {
        apply();
    }
    return Done{};
}

void WallpaperAgent::configurationChanged() {
    const std::string before = configurationError_;
    if (auto read = reload(); !read && read.error() != before) {
        complain(read.error());
    }
    noteChange();
}

void WallpaperAgent::quit() {
    loop_.async([this] { end(RunStatus::done); });
}

void WallpaperAgent::conditionsChanged() {
    const bool isLocked = conditions_->current().isLocked;
    if (std::exchange(wasLocked_, isLocked) != isLocked) {
        isLocked_ = isLocked;
    }
    apply();
}

void WallpaperAgent::choicesChanged() {
    if (choices_.forgetChanged()) {
        saveMemory();
        apply();
    }
}

void WallpaperAgent::commanded(Output& output, WindowCommand command) {
    switch (command) {
    case WindowCommand::toggleLock:
        setLocked(!isLocked_);
        return;
    case WindowCommand::toggleIdle:
        unlockedMode_ = unlockedMode_ == "idle" ? "default" : "idle";
        setLocked(false);
        return;
    case WindowCommand::toggleSuspend:
        setPaused(!isPaused_);
        return;
    case WindowCommand::nextWallpaper:
        showNext(output);
        return;
    case WindowCommand::quit:
        end(RunStatus::done);
        return;
    }
}

void WallpaperAgent::showNext(Output& output) {
    picker([this, connector =
                      output.description().connector](const Result<Picker, std::string>& offered) {
        // The output may have gone while the extension answered.
        ShownOutput* const shown = named(connector);
        if (!offered || shown == nullptr) {
            return;
        }
        const auto all = entries(offered.value());
        if (all.empty()) {
            return;
        }
        const auto now = std::find(all.begin(), all.end(), shown->shown().entry);
        const bool isLast = now == all.end() || std::next(now) == all.end();
        choices_.chooseForNow(shown->number(), isLast ? all.front() : *std::next(now));
        apply(*shown);
    });
}

} // namespace vantor::agent
