#pragma once
// The user's home folder, whatever home the process was given.

#include <filesystem>
#include <optional>

namespace vantor {

/// The environment variable VANTOR_USER_HOME, else what the user database says; nothing when it
/// says nothing. Any thread.
std::optional<std::filesystem::path> userHome();

} // namespace vantor
