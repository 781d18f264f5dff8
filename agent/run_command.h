#pragma once
// The command `vantor-agent run`.

#include "agent/run_status.h"

#include <CLI/CLI.hpp>

#include <functional>

namespace vantor::agent {

/// Adds the command to the program's; gives what carries it out once it was parsed.
std::function<RunStatus()> addRunCommand(CLI::App& app);

} // namespace vantor::agent
