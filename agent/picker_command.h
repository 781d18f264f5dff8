#pragma once
// `vantor-agent picker`: what the extension offers in the wallpaper picker.

#include "agent/kit/picker.h"
#include "agent/run_status.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace vantor::agent {

enum class PickerFormat { table, json };

/// For a person, a line for each item; for programs, an object with the lists "desktop" and
/// "screenSaver" of groups.
std::string pickerText(const Picker& picker, PickerFormat format);

/// Adds the command to the program's; gives what carries it out once it was parsed: it starts the
/// extension, asks it, prints the answer and ends it. Complaints go to standard error.
std::function<RunStatus()> addPickerCommand(CLI::App& app);

} // namespace vantor::agent
