#pragma once
// What the agent's commands print for people. Any thread.

#include "agent/control/controller.h"

#include <string>

namespace vantor::agent {

/// The agent and the extension, a line for each output, and a sentence for each trouble.
std::string statusTable(const AgentStatus& status);

/// A line for each entry, in the picker's order.
std::string pickerTable(const Picker& picker);

} // namespace vantor::agent
