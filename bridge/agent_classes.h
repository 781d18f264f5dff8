#pragma once
// The agent's classes, known by name only. Any thread.

#include "platform/xpc.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {
class Platform;
}

namespace vantor::PrivateBridge {

/// The fifteen classes that the agent's messages carry, in the protocol's order.
std::span<const std::string_view> xpcClassNames();

/// The names of the classes needed at start-up that the runtime does not know, in table order.
std::vector<std::string> missingClasses(Platform& platform);

/// What an incoming message may carry: the platform's plain classes and those of `xpcClassNames`
/// that exist now, in that order. Looked up anew on every call, since a framework loaded later adds
/// its classes.
ClassSet xpcAllowedClasses(Platform& platform);

} // namespace vantor::PrivateBridge
