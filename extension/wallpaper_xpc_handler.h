#pragma once
// Answers the agent's operations. One for each connection, which keeps it.

#include "extension/services.h"
#include "library/connected_agent.h"
#include "platform/wallpaper_protocol.h"
#include "platform/xpc.h"

#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace vantor {

/// Requests are decoded on the connection's queue; what touches surfaces runs, and replies, on the
/// main queue.
class WallpaperXPCHandler : public ExportedObject, public ConnectedAgent {
  public:
    explicit WallpaperXPCHandler(const Services& services) : services_(services) {}

    /// The places of the protocol that carry objects.
    static std::span<const ArgumentSlot> argumentSlots() { return wallpaperArgumentSlots(); }

    std::shared_ptr<AgentProxy> agent() const override;
    /// Null clears it. Any thread.
    void setAgent(std::shared_ptr<AgentProxy> agent);

    void invoke(WallpaperOperation operation, std::vector<ObjectRef> arguments,
                Reply reply) override;

  private:
    void acquire(const ObjectRef& id, const ObjectRef& request, Reply reply);
    void update(const ObjectRef& id, const ObjectRef& request, Reply reply);
    void invalidate(const ObjectRef& id, Reply reply);
    void invokeContextMenuAction(const ObjectRef& menuItemID);

    const Services services_;
    /// Guards agent_, which is set and cleared on the connection's threads and read on the main
    /// one.
    mutable std::mutex mutex_;
    std::shared_ptr<AgentProxy> agent_;
};

} // namespace vantor
