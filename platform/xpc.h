#pragma once
// Connections between the agent and the extension.
//   Linux: one peer-to-peer sd-bus connection per agent connection, each on its own thread and
//   queue; every object crosses as a keyed archive, and the class sets are enforced before a
//   handler sees a message.
//   macOS: NSXPCConnection and NSXPCInterface.

#include "platform/object_runtime.h"
#include "platform/result.h"
#include "platform/wallpaper_protocol.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantor {

/// Where a reply goes. Implemented by the transport; called at most once, on any thread, also after
/// the connection has gone (the reply is then dropped).
class ReplySink {
  public:
    virtual ~ReplySink() = default;
    virtual void error(const std::optional<Error>& error) = 0;
    virtual void object(const ObjectRef& object, const std::optional<Error>& error) = 0;
    virtual void boolean(bool value, const std::optional<Error>& error) = 0;
};

/// The one reply that an operation owes. Sending consumes it; a reply of the wrong shape, a second
/// one, or one that is dropped unsent is a mistake of ours and stops the process.
class Reply {
  public:
    Reply(ReplyShape shape, std::unique_ptr<ReplySink> sink);
    Reply(Reply&& other) noexcept = default;
    Reply& operator=(Reply&&) = delete;
    ~Reply();

    ReplyShape shape() const { return shape_; }

    /// Error only; nothing means success.
    void send(std::optional<Error> error) &&;
    void sendObject(ObjectRef object) &&;
    void sendObjectError(Error error) &&;
    /// No object and no error.
    void sendNothing() &&;
    void sendBoolean(bool value) &&;

  private:
    std::unique_ptr<ReplySink> take(ReplyShape shape);

    ReplyShape shape_;
    std::unique_ptr<ReplySink> sink_;
};

/// The object that answers a connection's operations.
class ExportedObject {
  public:
    virtual ~ExportedObject() = default;

    /// Called on the connection's queue, one operation at a time. `arguments` has the operation's
    /// number of arguments; an absent one is null. Every object's class is in its slot's set.
    virtual void invoke(WallpaperOperation operation, std::vector<ObjectRef> arguments,
                        Reply reply) = 0;
};

/// The remote end of a connection. Any thread.
class AgentProxy {
  public:
    virtual ~AgentProxy() = default;

    virtual bool conformsTo(std::string_view protocolName) const = 0;

    /// Sends "updateSettingsViewModels:reply:". Returns at once; `reply` is called once on the
    /// connection's queue with the agent's error, or with the transport's when the connection goes;
    /// at once, on the calling thread, when it has gone already or the object cannot be archived.
    virtual void updateSettingsViewModels(const ObjectRef& viewModels,
                                          std::function<void(std::optional<Error>)> reply) = 0;
};

using ClassSet = std::vector<const ObjectClass*>;

/// A protocol and which classes each of its slots may carry. A slot without a set carries nothing.
class XPCInterface {
  public:
    explicit XPCInterface(std::string_view protocolName) : protocolName_(protocolName) {}

    std::string_view protocolName() const { return protocolName_; }
    void setClasses(ClassSet classes, const ArgumentSlot& slot);
    /// Empty when none was set.
    std::span<const ObjectClass* const> classes(const ArgumentSlot& slot) const;
    std::size_t slotCount() const { return sets_.size(); }

  private:
    std::string_view protocolName_;
    std::vector<std::pair<ArgumentSlot, ClassSet>> sets_;
};

/// One connection. Configured before `resume`, on the thread that accepts it. The platform keeps it
/// alive until the peer is gone; it owns the exported object.
class XPCConnection {
  public:
    virtual ~XPCConnection() = default;

    /// From the kernel, not from the peer's word.
    virtual int processIdentifier() const = 0;

    virtual void setExportedInterface(XPCInterface interface) = 0;
    virtual void setRemoteObjectInterface(XPCInterface interface) = 0;
    virtual void setExportedObject(std::shared_ptr<ExportedObject> object) = 0;
    virtual std::shared_ptr<AgentProxy> remoteObjectProxy() = 0;
    /// Called once, on the connection's queue, when the peer is gone.
    virtual void setInvalidationHandler(std::function<void()> handler) = 0;
    /// Called on the connection's queue with a sentence for each message that was refused before it
    /// reached the exported object. Never called where the system logs those itself (macOS).
    virtual void setRefusalHandler(std::function<void(const std::string&)> handler) = 0;
    /// Messages are delivered from here on.
    virtual void resume() = 0;
};

} // namespace vantor
