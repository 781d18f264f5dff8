#pragma once
// A connection of the agent, as the library sees it.

#include "platform/xpc.h"

#include <memory>

namespace vantor {

class ConnectedAgent {
  public:
    virtual ~ConnectedAgent() = default;
    /// The agent's end; null when it is gone or does not speak the protocol. Any thread.
    virtual std::shared_ptr<AgentProxy> agent() const = 0;
};

} // namespace vantor
