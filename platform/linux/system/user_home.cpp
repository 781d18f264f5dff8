#include "platform/linux/system/user_home.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace vantor {

std::optional<std::filesystem::path> userHome() {
    if (const char* home = std::getenv("VANTOR_USER_HOME"); home != nullptr && *home != '\0') {
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

} // namespace vantor
