#include "platform/linux/system/linux_notifications.h"

#include "platform/linux/system/followed_bus.h"
#include "platform/linux/system/logind_session.h"
#include "platform/unified_log.h"

#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantor {
namespace {

constexpr const char* kPath = "/com/nimbara/vantor";
constexpr const char* kInterface = "com.nimbara.vantor.Notifications";
constexpr const char* kMember = "Posted";
constexpr std::string_view kScreenLocked = "com.apple.screenIsLocked";
constexpr std::string_view kScreenUnlocked = "com.apple.screenIsUnlocked";

/// What a notification says about the screen; nothing for all but two.
std::optional<bool> lockOf(std::string_view name) {
    if (name == kScreenLocked) {
        return true;
    }
    return name == kScreenUnlocked ? std::optional(false) : std::nullopt;
}

} // namespace

class LinuxNotifications::State {
  public:
    State(MainLoop& loop, UnifiedLog& log)
        : log_(log.logger("com.nimbara.vantor", "notifications")),
          session_(loop, *log_, {.name = "session bus", .open = sd_bus_open_user},
                   [this](sd_bus* bus) { return prepare(bus); }),
          logind_(loop, *log_,
                  {.changed = [this](bool locked) { setLocked(locked); },
                   .found = [this](bool locked) { foundLocked(locked); }}) {}

    void observe(std::string_view name, std::function<void()> observer) {
        if (!observes_) {
            observes_ = true;
            reportMissing(session_.connect(),
                          "no session bus: ", "; changes are seen at the next start");
        }
        if (lockOf(name) && !observesLock_) {
            observesLock_ = true;
            reportMissing(logind_.connect(),
                          "no system bus: ", "; only the screen saver tells of the lock");
        }
        observers_.emplace(name, std::move(observer));
    }

    bool post(std::string_view name) {
        // A connection that has ended is found out by using it.
        return (session_.get() != nullptr && emit(name)) || (session_.connect() >= 0 && emit(name));
    }

  private:
    int prepare(sd_bus* bus) {
        if (!observes_) {
            // A poster that listened would have to read what it posts.
            return 0;
        }
        const int status =
            sd_bus_match_signal(bus, nullptr, nullptr, kPath, kInterface, kMember, posted, this);
        return status < 0 ? status
                          : sd_bus_match_signal(bus, nullptr, nullptr, nullptr,
                                                "org.freedesktop.ScreenSaver", "ActiveChanged",
                                                screenSaverChanged, this);
    }

    void reportMissing(int status, std::string_view which, std::string_view consequence) {
        if (status < 0) {
            log_->write(std::string(which) + std::strerror(-status) + std::string(consequence));
        }
    }

    bool emit(std::string_view name) {
        return sd_bus_emit_signal(session_.get(), kPath, kInterface, kMember, "s",
                                  std::string(name).c_str()) >= 0 &&
               // The poster may end right away.
               sd_bus_flush(session_.get()) >= 0;
    }

    void deliver(std::string_view name) {
        // An observer may add another.
        const auto [first, last] = observers_.equal_range(name);
        std::vector<std::function<void()>> heard;
        for (auto it = first; it != last; ++it) {
            heard.push_back(it->second);
        }
        for (const auto& observer : heard) {
            observer();
        }
    }

    void setLocked(bool locked) {
        if (locked_ != locked) {
            locked_ = locked;
            deliver(locked ? kScreenLocked : kScreenUnlocked);
        }
    }

    /// A screen that was never locked need not be told that it is unlocked.
    void foundLocked(bool locked) {
        if (locked || locked_) {
            setLocked(locked);
        }
    }

    static int posted(sd_bus_message* message, void* data, sd_bus_error*) {
        const char* name = nullptr;
        if (sd_bus_message_read(message, "s", &name) >= 0) {
            auto* self = static_cast<State*>(data);
            if (const auto locked = lockOf(name)) {
                self->locked_ = locked;
            }
            self->deliver(name);
        }
        return 0;
    }

    static int screenSaverChanged(sd_bus_message* message, void* data, sd_bus_error*) {
        int active = 0;
        if (sd_bus_message_read(message, "b", &active) >= 0) {
            static_cast<State*>(data)->setLocked(active != 0);
        }
        return 0;
    }

    std::unique_ptr<UnifiedLogger> log_;
    std::multimap<std::string, std::function<void()>, std::less<>> observers_;
    bool observes_ = false;
    bool observesLock_ = false;
    /// What was last said of the screen; nothing before the first word.
    std::optional<bool> locked_;
    FollowedBus session_;
    LogindSession logind_;
};

LinuxNotifications::LinuxNotifications(MainLoop& loop, UnifiedLog& log)
    : state_(std::make_unique<State>(loop, log)) {}

LinuxNotifications::~LinuxNotifications() = default;

void LinuxNotifications::observeDistributed(std::string_view name, std::function<void()> observer) {
    state_->observe(name, std::move(observer));
}

void LinuxNotifications::observeDarwin(std::string_view name, std::function<void()> observer) {
    state_->observe(name, std::move(observer));
}

bool LinuxNotifications::postDarwin(std::string_view name) { return state_->post(name); }

} // namespace vantor
