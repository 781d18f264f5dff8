#pragma once
// The agent's end of one connection, on the agent's main loop. Main thread.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/main_loop.h"
#include "platform/object_runtime.h"
#include "platform/result.h"
#include "platform/wallpaper_protocol.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantor::xpc {

/// What came back from a call.
struct CallResult {
    /// The extension's error, or the transport's.
    std::optional<Error> error;
    /// Of operations that answer with an object; null is an answer too.
    ObjectRef object;
    /// Of operations that answer with a boolean.
    bool boolean = false;
};

struct ClientHandlers {
    /// The extension calls the agent; the result is the error it is answered with, if any.
    std::function<std::optional<Error>(AgentOperation, std::vector<ObjectRef>)> called;
    /// The extension is gone. Called once.
    std::function<void()> disconnected;
};

class XPCClient {
  public:
    /// Takes a connected stream socket. `classes` are those that a reply or a call may carry. Null
    /// when no bus can be made on it.
    static std::unique_ptr<XPCClient> create(MainLoop& loop, FileDescriptor socket,
                                             const ObjectRuntime& runtime,
                                             std::vector<const ObjectClass*> classes,
                                             ClientHandlers handlers);
    ~XPCClient();
    XPCClient(const XPCClient&) = delete;
    XPCClient& operator=(const XPCClient&) = delete;

    /// Sends an operation; null arguments are absent ones. `done` is called once, later.
    void call(WallpaperOperation operation, const std::vector<ObjectRef>& arguments,
              std::function<void(CallResult)> done);

  private:
    struct State;
    explicit XPCClient(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace vantor::xpc
