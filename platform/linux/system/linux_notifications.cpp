#include "platform/linux/system/linux_notifications.h"

#include "platform/linux/main_loop.h"
#include "platform/linux/system/xpc/bus_message.h"
#include "platform/unified_log.h"

#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace vantor {
namespace {

constexpr const char* kPath = "/com/nimbara/vantor";
constexpr const char* kInterface = "com.nimbara.vantor.Notifications";
constexpr const char* kMember = "Posted";
constexpr const char* kScreenLocked = "com.apple.screenIsLocked";
constexpr const char* kScreenUnlocked = "com.apple.screenIsUnlocked";

} // namespace

struct LinuxNotifications::State {
    MainLoop& loop;
    UnifiedLog& log;
    xpc::Bus bus;
    bool tried = false;
    std::multimap<std::string, std::function<void()>, std::less<>> observers;

    void deliver(std::string_view name) {
        // An observer may add another.
        const auto [first, last] = observers.equal_range(name);
        std::vector<std::function<void()>> heard;
        for (auto it = first; it != last; ++it) {
            heard.push_back(it->second);
        }
        for (const auto& observer : heard) {
            observer();
        }
    }

    static int posted(sd_bus_message* message, void* data, sd_bus_error*) {
        const char* name = nullptr;
        if (sd_bus_message_read(message, "s", &name) >= 0) {
            static_cast<State*>(data)->deliver(name);
        }
        return 0;
    }

    static int screenSaverChanged(sd_bus_message* message, void* data, sd_bus_error*) {
        int active = 0;
        if (sd_bus_message_read(message, "b", &active) >= 0) {
            static_cast<State*>(data)->deliver(active != 0 ? kScreenLocked : kScreenUnlocked);
        }
        return 0;
    }

    int connect() {
        sd_bus* made = nullptr;
        if (const int status = sd_bus_open_user(&made); status < 0) {
            return status;
        }
        bus.reset(made);
        if (const int status = sd_bus_match_signal(bus.get(), nullptr, nullptr, kPath, kInterface,
                                                   kMember, posted, this);
            status < 0) {
            return status;
        }
        if (const int status = sd_bus_match_signal(bus.get(), nullptr, nullptr, nullptr,
                                                   "org.freedesktop.ScreenSaver", "ActiveChanged",
                                                   screenSaverChanged, this);
            status < 0) {
            return status;
        }
        return sd_bus_attach_event(bus.get(), loop.event(), SD_EVENT_PRIORITY_NORMAL);
    }
};

LinuxNotifications::LinuxNotifications(MainLoop& loop, UnifiedLog& log)
    : state_(new State{.loop = loop, .log = log, .bus = nullptr, .observers = {}}) {}

LinuxNotifications::~LinuxNotifications() = default;

bool LinuxNotifications::connected() {
    if (!state_->tried) {
        state_->tried = true;
        if (const int status = state_->connect(); status < 0) {
            state_->bus.reset();
            state_->log.logger("com.nimbara.vantor", "notifications")
                ->write(std::string("no session bus: ") + std::strerror(-status) +
                        "; changes are seen at the next start");
        }
    }
    return state_->bus != nullptr;
}

void LinuxNotifications::observeDistributed(std::string_view name, std::function<void()> observer) {
    static_cast<void>(connected());
    state_->observers.emplace(name, std::move(observer));
}

void LinuxNotifications::observeDarwin(std::string_view name, std::function<void()> observer) {
    observeDistributed(name, std::move(observer));
}

bool LinuxNotifications::postDarwin(std::string_view name) {
    return connected() &&
           sd_bus_emit_signal(state_->bus.get(), kPath, kInterface, kMember, "s",
                              std::string(name).c_str()) >= 0 &&
           // The poster may end right away.
           sd_bus_flush(state_->bus.get()) >= 0;
}

} // namespace vantor
