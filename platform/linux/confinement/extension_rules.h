#pragma once
// What an extension may touch on this system.

#include "platform/linux/confinement/landlock.h"

#include <filesystem>
#include <vector>

namespace vantor::confinement {

/// The places that matter, as the process that is to be confined sees them.
struct ExtensionPlaces {
    /// The extension's own.
    std::filesystem::path home;
    /// The user's, below which the host application keeps its state.
    std::filesystem::path userHome;
    /// The bundle and the frameworks of the running installation.
    std::vector<std::filesystem::path> installation;
};

/// Writing below the extension's home and to the GPU; reading there, in the installation, in the
/// system's folders, in the containers of applications and, of what the environment adds, GPU
/// drivers and desktop entries.
std::vector<Rule> extensionRules(const ExtensionPlaces& places);

} // namespace vantor::confinement
