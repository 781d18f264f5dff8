#include "platform/linux/system/user_home.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace vantor {
namespace {

std::optional<std::filesystem::path> givenHome() {
    const char* home = std::getenv("VANTOR_USER_HOME");
    return home != nullptr && *home != '\0' ? std::optional<std::filesystem::path>(home)
                                            : std::nullopt;
}

/// What a variable names; the specification has relative paths ignored.
std::optional<std::filesystem::path> folderIn(const char* variable) {
    const char* folder = std::getenv(variable);
    return folder != nullptr && *folder == '/' && !givenHome()
               ? std::optional<std::filesystem::path>(folder)
               : std::nullopt;
}

std::optional<std::filesystem::path> folderIn(const char* variable, const char* belowHome) {
    if (auto folder = folderIn(variable)) {
        return folder;
    }
    const auto home = userHome();
    return home ? std::optional(*home / belowHome) : std::nullopt;
}

} // namespace

std::optional<std::filesystem::path> userHome() {
    if (auto home = givenHome()) {
        return home;
    }
    const long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr || found->pw_dir == nullptr || *found->pw_dir == '\0') {
        return std::nullopt;
    }
    return found->pw_dir;
}

std::optional<std::filesystem::path> userConfigurationFolder() {
    return folderIn("XDG_CONFIG_HOME", ".config");
}

std::optional<std::filesystem::path> userStateFolder() {
    return folderIn("XDG_STATE_HOME", ".local/state");
}

std::optional<std::filesystem::path> userRuntimeFolder() { return folderIn("XDG_RUNTIME_DIR"); }

} // namespace vantor
