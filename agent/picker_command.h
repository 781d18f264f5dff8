#pragma once
// `vantor-agent picker`: what the extension offers in the wallpaper picker.

#include "agent/run_status.h"

#include <CLI/CLI.hpp>

#include <functional>

namespace vantor::agent {

/// Adds the command to the program's; gives what carries it out once it was parsed: it asks the
/// agent that runs, or else starts the extension, asks it and ends it; and prints the answer: for a
/// person, a line for each item; for programs, as in agent/control/picker_json.h. An extension that
/// is named is started in any case. Complaints go to standard error.
std::function<RunStatus()> addPickerCommand(CLI::App& app);

} // namespace vantor::agent
