#pragma once
// The kernel's Landlock: a process gives up, for itself and all it starts, every access to files
// that no rule grants, and TCP with it.

#include "platform/result.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vantor::confinement {

enum class Access {
    /// Files and folders below.
    read,
    /// As well as making, changing and removing them; running them is never granted.
    readAndWrite,
    /// A device node, or the nodes of a folder: opened for both, and their own controls.
    device,
};

struct Rule {
    std::filesystem::path path;
    Access access;
};

/// Applies to the calling thread and what it starts from then on, for good; call it while the
/// process has one thread. A rule for what does not exist grants nothing. The error says why the
/// process is not confined, which it then is not at all.
Result<Done, std::string> confine(const std::vector<Rule>& rules);

} // namespace vantor::confinement
