#include "platform/linux/system/system_root.h"

#include <cstdlib>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vantor {

std::filesystem::path runningProgram() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

std::filesystem::path systemRoot() {
    if (const char* root = std::getenv("VANTOR_SYSTEM_ROOT"); root != nullptr && *root != '\0') {
        return root;
    }
    const std::filesystem::path folder = runningProgram().parent_path();
    if (folder.extension() == ".appex") {
        return folder.parent_path();
    }
    return folder.parent_path() / "lib" / "vantor";
}

std::filesystem::path installationPrefix() {
    const std::filesystem::path folder = runningProgram().parent_path();
    if (folder.extension() == ".appex") {
        return folder.parent_path().parent_path().parent_path();
    }
    return folder.parent_path();
}

uid_t installationOwner() {
    struct stat status {};
    return stat("/proc/self/exe", &status) == 0 ? status.st_uid : geteuid();
}

} // namespace vantor
