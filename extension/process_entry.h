#pragma once
// The process's main function, which runs twice.

namespace vantor {

class Platform;

/// The first call hands control to the platform's extension runtime ("NSExtensionMain"), which
/// calls it again; the second call serves. Gives the exit status. Main thread.
int processEntry(Platform& platform, int argc, char** argv);

} // namespace vantor
