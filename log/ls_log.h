#pragma once
// The process's log: the unified log with subsystem "com.nimbara.app.lockscreen" and category
// "extension", and "Library/Logs/lockscreen.log" in the process's home. Made from the installed
// platform on first use.

#include <string_view>

namespace vantor::LSLog {

/// Any thread; returns at once. Failures of the file are silent.
void write(std::string_view message);

/// Waits until the lines written so far have reached the file. Done at a normal exit of the process
/// by itself.
void flush();

} // namespace vantor::LSLog
