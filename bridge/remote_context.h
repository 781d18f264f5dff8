#pragma once
// A remote layer context: the platform's object through which the agent shows a layer tree of this
// process. Main thread only.

#include "platform/object_runtime.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace vantor {
class Platform;
}

namespace vantor::PrivateBridge {

/// Keeps the context's object for as long as it lives; releasing the last reference releases it.
class RemoteContext {
  public:
    RemoteContext(ObjectRef object, std::uint32_t contextID)
        : object_(std::move(object)), contextID_(contextID) {}

    const ObjectRef& object() const { return object_; }
    /// Never 0.
    std::uint32_t contextID() const { return contextID_; }

  private:
    ObjectRef object_;
    std::uint32_t contextID_;
};

/// A new context, for a display where one is given. Null when the platform has no remote contexts,
/// refuses one, or gives one without an identifier; nothing is logged.
std::shared_ptr<RemoteContext> makeRemoteContext(Platform& platform,
                                                 std::optional<std::uint32_t> displayID);

} // namespace vantor::PrivateBridge
