#include "platform/linux/confinement/extension_rules.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

namespace vantor::confinement {
namespace {

/// Libraries, drivers and their settings, the machine's description; nothing of a user's.
constexpr std::string_view kSystemFolders[] = {
    "/usr",        "/lib",      "/lib32",    "/lib64",     "/bin",
    "/etc",        "/opt",      "/sys",      "/proc",      "/dev/urandom",
    "/dev/random", "/dev/zero", "/run/udev", "/nix/store", "/gnu/store"};

/// Where drivers come from besides, by the environment: lists of files and folders.
constexpr const char* kDriverVariables[] = {"LD_LIBRARY_PATH", "VK_ADD_DRIVER_FILES",
                                            "VK_DRIVER_FILES", "VK_ICD_FILENAMES", "VK_LAYER_PATH"};

constexpr std::string_view kDevices[] = {"/dev/dri", "/dev/null", "/dev/kfd", "/dev/udmabuf"};
/// The nodes of one maker's driver stand in "/dev" itself.
constexpr std::string_view kDevicePrefix = "nvidia";

std::vector<std::filesystem::path> listed(const char* variable) {
    const char* value = std::getenv(variable);
    std::string_view rest = value != nullptr ? value : "";
    std::vector<std::filesystem::path> paths;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        if (end > 0) {
            paths.emplace_back(rest.substr(0, end));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return paths;
}

void addDevices(std::vector<Rule>& rules) {
    for (const std::string_view device : kDevices) {
        rules.push_back({device, Access::device});
    }
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator("/dev", failed)) {
        if (entry.path().filename().string().starts_with(kDevicePrefix)) {
            rules.push_back({entry.path(), Access::device});
        }
    }
}

} // namespace

std::vector<Rule> extensionRules(const ExtensionPlaces& places) {
    std::vector<Rule> rules{{places.home, Access::readAndWrite},
                            {places.userHome / "Library/Containers", Access::read}};
    for (const auto& folder : places.installation) {
        rules.push_back({folder, Access::read});
    }
    for (const std::string_view folder : kSystemFolders) {
        rules.push_back({folder, Access::read});
    }
    for (const char* variable : kDriverVariables) {
        for (auto& path : listed(variable)) {
            rules.push_back({std::move(path), Access::read});
        }
    }
    for (const char* variable : {"XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
        for (const auto& folder : listed(variable)) {
            rules.push_back({folder / "applications", Access::read});
        }
    }
    addDevices(rules);
    return rules;
}

} // namespace vantor::confinement
