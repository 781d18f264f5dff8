#pragma once
// What the extension offers as JSON, for programs and for the agent's own commands. Any thread.

#include "agent/kit/picker.h"

#include <optional>
#include <string>
#include <string_view>

namespace vantor::agent {

/// An object with the lists "desktop" and "screenSaver" of groups. What is no UTF-8 has its bytes
/// replaced.
std::string pickerJson(const Picker& picker);

/// Nothing when the text is no JSON object. What another version of the agent does not say is as
/// though it were empty.
std::optional<Picker> readPickerJson(std::string_view text);

/// The path that a file URL names; empty when the text is no file URL.
std::string pathOfFileURL(std::string_view url);

} // namespace vantor::agent
