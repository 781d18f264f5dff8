#pragma once

#include "platform/darwin/native_ref.h"
#include "platform/xpc.h"

#include <memory>

namespace vantor::darwin {

/// Over an NSXPCConnection.
std::shared_ptr<XPCConnection> makeXPCConnection(NativeRef connection);

} // namespace vantor::darwin
