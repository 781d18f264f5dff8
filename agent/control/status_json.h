#pragma once
// An agent's status as JSON, for programs and for its own commands. Any thread.

#include "agent/control/controller.h"

#include <optional>
#include <string>
#include <string_view>

namespace vantor::agent {

/// An object, with a line for each value. What is no UTF-8 has its bytes replaced.
std::string statusJson(const AgentStatus& status);

/// Nothing when the text is no JSON object. What another version of the agent does not say is as
/// though it were empty.
std::optional<AgentStatus> readStatusJson(std::string_view text);

} // namespace vantor::agent
