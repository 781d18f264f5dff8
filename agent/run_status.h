#pragma once

namespace vantor::agent {

/// How a command ends: the program's exit status.
enum class RunStatus : int {
    done = 0,
    /// It could not start, or could not do what it was asked; the reason is on standard error.
    failed = 1,
    usage = 2,
    /// The extension ended before the agent did.
    extensionEnded = 3,
};

} // namespace vantor::agent
