#pragma once
// Lets a running agent be asked: over the session bus, where there is one, and over a private
// socket. Main thread.

#include "agent/control/control_object.h"
#include "agent/control/control_socket.h"
#include "platform/linux/system/followed_bus.h"
#include "platform/unified_log.h"

#include <list>
#include <memory>

namespace vantor::agent {

class ControlService {
  public:
    /// As ControlSocket::Problem: whether another agent runs, or why nobody could ask this one.
    using Problem = ControlSocket::Problem;

    /// Answers from the loop with what the controller says, until its end; the controller is asked
    /// nothing before the loop runs. It is enough to be
    /// reached in one of the two ways; what is said about the other goes to the log. The session
    /// bus is followed when it goes away and comes back. `socketFile` is controlSocketFile()
    /// outside of tests.
    static Result<std::unique_ptr<ControlService>, Problem>
    create(MainLoop& loop, UnifiedLog& log, Controller& controller,
           const std::optional<std::filesystem::path>& socketFile);
    ControlService(const ControlService&) = delete;
    ControlService& operator=(const ControlService&) = delete;

    /// What the controller says may be something else. Those who listen are told at the end of the
    /// loop's turn, once for all calls until then. Only what differs is told, so it costs little to
    /// call it too often.
    void notifyChanged();

  private:
    /// A connection over the private socket.
    struct Peer {
        ControlService& service;
        xpc::Bus bus;
        bool isGone = false;
    };

    ControlService(MainLoop& loop, UnifiedLog& log, Controller& controller);
    int prepareBus(sd_bus* bus);
    void accept(FileDescriptor connection);
    void drop(Peer& peer);
    static int filterPeer(sd_bus_message* message, void* peer, sd_bus_error* error);
    void tellChanges();
    void later(std::function<void()> work);

    MainLoop& loop_;
    std::unique_ptr<UnifiedLogger> log_;
    ControlObject object_;
    FollowedBus bus_;
    std::list<Peer> peers_;
    std::unique_ptr<ControlSocket> socket_;
    bool willTell_ = false;
    /// What was posted does nothing once this is gone.
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

} // namespace vantor::agent
