#pragma once

namespace vantor::agent {

/// How a command ends: the program's exit status.
enum class RunStatus : int {
    done = 0,
    /// It could not start, or could not do what it was asked; the reason is on standard error.
    failed = 1,
    usage = 2,
    /// The extension had ended, and was not running again when the agent ended.
    extensionEnded = 3,
    /// The display server is gone.
    displayServerGone = 4,
};

} // namespace vantor::agent
