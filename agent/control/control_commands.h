#pragma once
// The commands that ask a running agent: status, choose, lock, unlock, pause, resume, reload, quit.

#include "agent/run_status.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <vector>

namespace vantor::agent {

/// Adds the commands to the program's; gives what carries each out once it was parsed, in the order
/// in which they were added. Where no agent runs they say so and fail.
std::vector<std::function<RunStatus()>> addControlCommands(CLI::App& app);

} // namespace vantor::agent
