#pragma once
// Whether a peer may be served.

namespace vantor {

class CodeIdentity;
class XPCConnection;

namespace CallerCheck {

/// False only for a peer whose code could be examined and is not the system's own. Every failure to
/// examine it lets it through: a peer that is refused by mistake is a lock screen without a
/// wallpaper, and what a wallpaper gives away is no secret. Any thread.
bool isApple(CodeIdentity& identity, const XPCConnection& connection);

} // namespace CallerCheck
} // namespace vantor
