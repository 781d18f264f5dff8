#pragma once
// The names by which a running agent is asked, over the session bus and over its private socket.
// docs/dbus-interface.md describes the interface.

namespace vantor::agent {

inline constexpr const char* kControlBusName = "com.nimbara.vantor.Agent";
inline constexpr const char* kControlPath = "/com/nimbara/vantor/Agent";
inline constexpr const char* kControlInterface = "com.nimbara.vantor.Agent1";

/// What was asked for cannot be: the caller's mistake. The message is a sentence.
inline constexpr const char* kControlRefused = "com.nimbara.vantor.Error.Refused";
/// It could not be done. The message is a sentence.
inline constexpr const char* kControlFailed = "com.nimbara.vantor.Error.Failed";

} // namespace vantor::agent
