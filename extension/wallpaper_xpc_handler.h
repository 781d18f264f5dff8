#pragma once
// The object that answers the agent's operations on one connection.

#include "bridge/request_decoding.h"
#include "library/connected_agent.h"
#include "platform/uuid.h"
#include "platform/xpc.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vantor {

class LockScreenLibrary;
class Platform;
class SurfaceRegistry;

/// Holds no state but the agent's proxy; surfaces live in the registry. Requests arrive on the
/// connection's queue, are decoded there, and touch surfaces on the main queue only.
class WallpaperXPCHandler : public ExportedObject,
                            public ConnectedAgent,
                            public std::enable_shared_from_this<WallpaperXPCHandler> {
  public:
    /// The three must outlive the handler and the main queue's work.
    WallpaperXPCHandler(Platform& platform, LockScreenLibrary& library, SurfaceRegistry& registry);

    void invoke(WallpaperOperation operation, std::vector<ObjectRef> arguments,
                Reply reply) override;

    std::shared_ptr<AgentProxy> agent() const override;
    /// Null clears it. Any thread.
    void setAgent(std::shared_ptr<AgentProxy> agent);

    /// An error of this extension.
    static Error fail(int code, std::string message);

  private:
    void acquire(const ObjectRef& identifier, const ObjectRef& request, Reply reply);
    void update(const ObjectRef& identifier, const ObjectRef& request, Reply reply);
    void invalidate(const ObjectRef& identifier, Reply reply);
    void provideSettingsViewModels(Reply reply);
    void invokeContextMenuAction(const ObjectRef& menuItemID);

    // On the main queue.
    void acquireOnMain(const UUID& uuid, const PrivateBridge::Creation& creation, Reply reply);
    void updateOnMain(const std::optional<UUID>& uuid, const PrivateBridge::Update& update,
                      Reply reply);
    /// Posts work that owes a reply to the main queue.
    template <typename Work>
    void onMain(Reply reply, Work work);

    Platform& platform_;
    LockScreenLibrary& library_;
    SurfaceRegistry& registry_;

    /// Guards agent_.
    mutable std::mutex lock_;
    std::shared_ptr<AgentProxy> agent_;
};

} // namespace vantor
