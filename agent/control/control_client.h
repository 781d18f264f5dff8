#pragma once
// Asks a running agent, over its private socket or the session bus. Blocks; any thread, one at a
// time.

#include "platform/linux/system/xpc/bus_message.h"
#include "platform/result.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vantor::agent {

class ControlClient {
  public:
    using Patience = std::chrono::seconds;

    /// A connection to the agent that listens at the socket, or else to the one on the session bus;
    /// nothing when no agent runs.
    static std::optional<ControlClient>
    connect(const std::optional<std::filesystem::path>& socketFile);

    /// Calls a method of the agent's interface with strings; gives the string that it answers with,
    /// which is empty for a method that gives nothing. The error is a sentence: the agent's own, or
    /// that it does not answer.
    Result<std::string, std::string> call(const char* method,
                                          const std::vector<std::string>& arguments = {},
                                          Patience patience = Patience(10));

  private:
    ControlClient(xpc::Bus bus, const char* destination)
        : bus_(std::move(bus)), destination_(destination) {}

    xpc::Bus bus_;
    /// Null on a connection to the agent itself.
    const char* destination_;
};

} // namespace vantor::agent
