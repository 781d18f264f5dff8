#pragma once

#include "platform/darwin/native_ref.h"
#include "platform/xpc.h"

#include <memory>

namespace vantor::darwin {

/// An object of the Objective-C runtime that conforms to the exported protocol, and passes each of
/// its operations to `object`, which it keeps.
NativeRef makeExportedHandler(std::shared_ptr<ExportedObject> object);

/// Over an NSXPCConnection.
std::shared_ptr<XPCConnection> makeXPCConnection(NativeRef connection);

} // namespace vantor::darwin
