#include "agent/extension_bundle.h"

#include "platform/linux/system/system_root.h"

namespace vantor::agent {

void addExtensionOption(CLI::App& command, std::string& folder) {
    command.add_option("--extension", folder, "The extension's bundle folder")->type_name("DIR");
}

std::filesystem::path bundleFolder(const std::string& folder) {
    return folder.empty() ? systemRoot() / "VantorLockScreen.appex" : std::filesystem::path(folder);
}

} // namespace vantor::agent
