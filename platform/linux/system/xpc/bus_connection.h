#pragma once
// The extension's end of one connection: a thread of its own, its queue, and the checks that stand
// between the wire and the exported object.

#include "platform/linux/file_descriptor.h"
#include "platform/xpc.h"

#include <memory>

namespace vantor {

class ObjectRuntime;

namespace xpc {

/// Takes a connected stream socket; null when the peer's credentials or a bus cannot be had. The
/// connection keeps itself alive from `resume` until its peer is gone. A connection that is dropped
/// without being resumed closes the socket.
std::shared_ptr<XPCConnection> makeBusConnection(FileDescriptor socket,
                                                 const ObjectRuntime& runtime);

} // namespace xpc
} // namespace vantor
