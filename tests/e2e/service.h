#pragma once
// The real extension in its process, with the test in the agent's seat: well-behaved clients over
// the agent's own code, and raw peers that write what they please.

#include "agent/kit/requests.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/launch/launch_host.h"
#include "platform/linux/main_loop.h"
#include "platform/linux/system/xpc/xpc_client.h"
#include "platform/uuid.h"
#include "tests/e2e/installation.h"
#include "tests/support/raw_bus.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantor::e2e {

/// The agent's end of one connection, byte by byte.
class RawPeer {
  public:
    explicit RawPeer(FileDescriptor socket) : socket_(std::move(socket)) {}

    /// Writes all of it, waiting for room; false when the extension closed the connection first, or
    /// takes nothing more for a minute.
    bool send(std::span<const std::uint8_t> bytes) const;
    bool send(const rawbus::MethodCall& call) const { return send(rawbus::marshal(call)); }
    /// Writes what there is room for now, with descriptors beside it.
    bool sendWithDescriptors(std::span<const std::uint8_t> bytes,
                             std::span<const int> descriptors) const;
    bool authenticate() {
        return send(rawbus::authentication()) && receiveLine().starts_with("OK ");
    }
    /// The next message that comes; nothing when the extension closes the connection first, or says
    /// nothing for a minute.
    std::optional<rawbus::Message> receive();
    /// The next line of the authentication; empty when none comes.
    std::string receiveLine();
    /// Reads until the extension closes the connection; false when it does not within a minute.
    bool isClosed();

  private:
    /// Takes what comes; false at the end or when nothing comes for a minute.
    bool readMore();

    FileDescriptor socket_;
    Bytes unread_;
};

/// The error that a refusal carries: its sentence stands first in the body.
std::string errorText(const rawbus::Message& message);

class Service : public Installation {
  protected:
    void SetUp() override;

    /// Starts the extension with this fixture's environment; a test may change that before.
    void start();
    std::unique_ptr<xpc::XPCClient> client();
    RawPeer rawPeer() { return RawPeer(host_->connect()); }
    /// A raw peer that is through with authentication.
    RawPeer authenticatedPeer();

    /// Calls and waits for the answer.
    xpc::CallResult call(xpc::XPCClient& client, WallpaperOperation operation,
                         std::vector<ObjectRef> arguments = {});
    /// Acquires a small wallpaper; the result's object is the remote context.
    xpc::CallResult acquire(xpc::XPCClient& client, const std::string& choice = "plasma");

    /// Runs the loop until the condition holds; false when it does not within the patience.
    bool eventually(const std::function<bool()>& holds, double seconds = 60);

    bool isServing() const { return !ended_; }
    const std::string& howItEnded() const { return *ended_; }
    launch::LaunchHost& host() { return *host_; }
    MainLoop& loop() { return loop_; }
    const std::vector<std::string>& opened() const { return opened_; }

    std::vector<std::string> descriptors() const;
    std::size_t descriptorCount() const { return descriptors().size(); }
    /// Images that the software device shares with the agent.
    std::size_t drawableCount() const;
    /// KiB.
    std::size_t residentMemory() const;
    std::size_t threadCount() const;

    std::filesystem::path bundle() const {
        return VANTOR_BIN "/../lib/vantor/VantorLockScreen.appex";
    }

    ClassRegistry runtime_;

  private:
    MainLoop loop_;
    std::unique_ptr<launch::LaunchHost> host_;
    std::optional<std::string> ended_;
    std::vector<std::string> opened_;
};

} // namespace vantor::e2e
