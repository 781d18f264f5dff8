#pragma once
// `vantor-agent picker`: what the extension offers in the wallpaper picker.

#include "agent/kit/picker.h"
#include "agent/run_status.h"
#include "platform/linux/main_loop.h"

#include <filesystem>
#include <string>

namespace vantor {
class Platform;
}

namespace vantor::agent {

enum class PickerFormat { table, json };

/// For a person, a line for each item; for programs, an object with the lists "desktop" and
/// "screenSaver" of groups.
std::string pickerText(const Picker& picker, PickerFormat format);

/// Starts the extension, asks it, prints the answer and ends it. Complaints go to standard error.
RunStatus printPicker(Platform& platform, MainLoop& loop, const std::filesystem::path& extension,
                      PickerFormat format);

} // namespace vantor::agent
