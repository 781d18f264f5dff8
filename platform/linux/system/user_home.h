#pragma once
// The user's folders, whatever home the process was given.

#include <filesystem>
#include <optional>

namespace vantor {

/// The environment variable VANTOR_USER_HOME, else what the user database says; nothing when it
/// says nothing. Any thread.
std::optional<std::filesystem::path> userHome();

// Where programs keep what is the user's (XDG Base Directory Specification 0.8); nothing where
// there is no such folder. With VANTOR_USER_HOME in the environment they are below that home, so
// that nothing outside it is touched; else the variables named below count. Any thread.

/// Settings: XDG_CONFIG_HOME, or .config in the home.
std::optional<std::filesystem::path> userConfigurationFolder();
/// What is remembered: XDG_STATE_HOME, or .local/state in the home.
std::optional<std::filesystem::path> userStateFolder();
/// Sockets: XDG_RUNTIME_DIR. Nothing with VANTOR_USER_HOME.
std::optional<std::filesystem::path> userRuntimeFolder();

} // namespace vantor
