#pragma once
// Whether a connection comes from the system.

namespace vantor {

class CodeIdentity;

namespace CallerCheck {

/// False only for a process whose code could be examined and is not the system's own. Every failure
/// to examine lets the caller through: an agent that the system hides must not lose its wallpaper.
/// Any thread.
bool isApple(CodeIdentity& identity, int processIdentifier);

} // namespace CallerCheck
} // namespace vantor
