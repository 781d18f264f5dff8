#pragma once
// What the agent knows of the application that chooses for the displays.

#include <string>
#include <string_view>

namespace vantor::agent {

/// Its identifier.
extern const char* const kHostApplication;
/// The notification that it posts when it has chosen something else.
extern const char* const kHostApplicationChanged;

/// Equal as long as the choice means the same wallpaper: an entry is itself, the host application's
/// choice is what its state file holds. Reads the file.
std::string fingerprintOf(std::string_view choice);

} // namespace vantor::agent
