#include "agent/control/control_service.h"

#include "agent/control/control_interface.h"
#include "platform/linux/system/xpc/bus_message.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace vantor::agent {
namespace {

constexpr std::size_t kMaxPeers = 16;
/// A peer that leaves more messages unread is dropped.
constexpr std::uint64_t kMaxUnread = 64;

/// Whether the peer takes what it is sent.
bool keepsUp(sd_bus* bus) {
    std::uint64_t unread = 0;
    return sd_bus_get_n_queued_write(bus, &unread) < 0 || unread <= kMaxUnread;
}

/// Who has the agent's name on the bus.
std::string ownerOn(sd_bus* bus) {
    sd_bus_creds* owner = nullptr;
    pid_t pid = 0;
    if (sd_bus_get_name_creds(bus, kControlBusName, SD_BUS_CREDS_PID, &owner) >= 0) {
        sd_bus_creds_get_pid(owner, &pid);
        sd_bus_creds_unref(owner);
    }
    return "pid " + std::to_string(pid);
}

} // namespace

ControlService::ControlService(MainLoop& loop, UnifiedLog& log, Controller& controller)
    : loop_(loop), log_(log.logger("com.nimbara.vantor", "control")), object_(controller),
      bus_(loop, *log_, {.name = "session bus", .open = sd_bus_open_user},
           [this](sd_bus* bus) { return prepareBus(bus); }) {}

Result<std::unique_ptr<ControlService>, ControlService::Problem>
ControlService::create(MainLoop& loop, UnifiedLog& log, Controller& controller,
                       const std::optional<std::filesystem::path>& socketFile) {
    std::unique_ptr<ControlService> made(new ControlService(loop, log, controller));
    std::string withoutSocket = "the user has no folder for a socket";
    if (socketFile) {
        auto socket = ControlSocket::listen(loop, *socketFile,
                                            [self = made.get()](FileDescriptor connection) {
                                                self->accept(std::move(connection));
                                            });
        if (socket) {
            made->socket_ = std::move(*socket);
        } else if (socket.error().agent) {
            return Failure{socket.error()};
        } else {
            withoutSocket = socket.error().sentence;
        }
    }
    const int status = made->bus_.connect();
    if (!made->socket_ && status < 0) {
        return Failure{Problem{.agent = std::nullopt,
                               .sentence = "nobody can ask this agent anything: " + withoutSocket +
                                           "; no session bus: " + std::strerror(-status)}};
    }
    if (!made->socket_) {
        made->log_->write("no private socket: " + withoutSocket);
    }
    if (status < 0) {
        made->log_->write(std::string("no session bus: ") + std::strerror(-status) +
                          "; the agent is asked over its private socket");
    }
    // Changes are those since the loop runs.
    made->notifyChanged();
    return made;
}

int ControlService::prepareBus(sd_bus* bus) {
    int status = object_.offerOn(bus);
    if (status < 0) {
        return status;
    }
    // The private socket says which agent is the user's; one with another home may have the name
    // first, and this one then has it after it.
    status = sd_bus_request_name(bus, kControlBusName, SD_BUS_NAME_QUEUE);
    if (status == 0) {
        log_->write("another agent answers on the session bus (" + ownerOn(bus) + ")");
    }
    return status;
}

void ControlService::accept(FileDescriptor connection) {
    if (peers_.size() >= kMaxPeers) {
        // The caller sees its connection end.
        log_->write("a caller is refused, for " + std::to_string(kMaxPeers) + " are connected");
        return;
    }
    xpc::Bus bus = xpc::openBus(connection.get(), xpc::Side::server);
    if (!bus) {
        return;
    }
    connection.release();
    Peer& peer = peers_.emplace_back(Peer{.service = *this, .bus = std::move(bus)});
    if (sd_bus_add_filter(peer.bus.get(), nullptr, filterPeer, &peer) < 0 ||
        object_.offerOn(peer.bus.get()) < 0 || sd_bus_start(peer.bus.get()) < 0 ||
        sd_bus_attach_event(peer.bus.get(), loop_.event(), SD_EVENT_PRIORITY_NORMAL) < 0) {
        peers_.pop_back();
    }
}

void ControlService::drop(Peer& peer) {
    if (std::exchange(peer.isGone, true)) {
        return;
    }
    sd_bus_close(peer.bus.get());
    // Not from within one of its own callbacks.
    later([this] { std::erase_if(peers_, [](const Peer& each) { return each.isGone; }); });
}

int ControlService::filterPeer(sd_bus_message* message, void* data, sd_bus_error*) {
    auto* peer = static_cast<Peer*>(data);
    if (xpc::isDisconnection(message) || !keepsUp(peer->bus.get())) {
        peer->service.drop(*peer);
        return 1;
    }
    return 0;
}

void ControlService::notifyChanged() {
    if (!std::exchange(willTell_, true)) {
        later([this] {
            willTell_ = false;
            tellChanges();
        });
    }
}

void ControlService::tellChanges() {
    auto names = object_.takeChanges();
    if (names.empty()) {
        return;
    }
    names.push_back(nullptr);
    const auto tell = [&names](sd_bus* bus) {
        // The names are not written to; the interface is older than that word.
        sd_bus_emit_properties_changed_strv(bus, kControlPath, kControlInterface,
                                            const_cast<char**>(names.data()));
    };
    if (bus_.get() != nullptr) {
        tell(bus_.get());
    }
    for (Peer& peer : peers_) {
        if (!keepsUp(peer.bus.get())) {
            drop(peer);
        } else if (sd_bus_is_ready(peer.bus.get()) > 0) {
            tell(peer.bus.get());
        }
    }
}

void ControlService::later(std::function<void()> work) {
    loop_.async([alive = std::weak_ptr(alive_), work = std::move(work)] {
        if (!alive.expired()) {
            work();
        }
    });
}

} // namespace vantor::agent
