#pragma once
// What every command that changes the state does: edit the file, and tell the extension.

#include "tools/command.h"
#include "tools/state_file.h"

namespace vantor {

/// Posts the change notification; false when nobody can be told.
bool tellExtension(Platform& platform);

/// Changes the state file and tells a running extension. A failure is said on the console, and so
/// is that nobody could be told, which is no failure: the file holds the new state.
ExitStatus changeState(Platform& platform, const Console& console, const StateFile::Change& change);

} // namespace vantor
