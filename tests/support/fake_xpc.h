#pragma once
// A connection that a test drives in the agent's place. It enforces the class sets as the real one
// does, and catches every reply.

#include "platform/xpc.h"
#include "tests/support/fake_contract.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

/// What one operation was answered with.
struct CaughtReply {
    int count = 0;
    ObjectRef object;
    std::optional<Error> error;
    std::optional<bool> boolean;
};
using CaughtReplyRef = std::shared_ptr<CaughtReply>;

/// A reply that is caught.
Reply catchReply(ReplyShape shape, CaughtReplyRef into);

class FakeAgentProxy : public AgentProxy {
  public:
    bool conformsTo(std::string_view protocolName) const override {
        return protocolName == protocol;
    }
    void updateSettingsViewModels(const ObjectRef& viewModels,
                                  std::function<void(std::optional<Error>)> reply) override;

    std::string protocol{kAgentProtocolName};
    std::vector<ObjectRef> received;
    /// What each update is answered with.
    std::optional<Error> answer;
    /// Called while the agent is being called.
    std::function<void()> onUpdate;
};

class FakeConnection : public XPCConnection {
  public:
    explicit FakeConnection(int processIdentifier) : processIdentifier_(processIdentifier) {}

    int processIdentifier() const override { return processIdentifier_; }
    void setExportedInterface(XPCInterface interface) override;
    void setRemoteObjectInterface(XPCInterface interface) override;
    void setExportedObject(std::shared_ptr<ExportedObject> object) override;
    std::shared_ptr<AgentProxy> remoteObjectProxy() override;
    void setInvalidationHandler(std::function<void()> handler) override;
    void setRefusalHandler(std::function<void(const std::string&)> handler) override;
    void resume() override;

    /// Sends an operation as the agent would, from the calling thread. A class outside of its
    /// slot's set is refused with an error and never reaches the exported object.
    CaughtReplyRef send(WallpaperOperation operation, std::vector<ObjectRef> arguments = {});

    /// The peer is gone; the exported object is let go.
    void invalidate();

    const XPCInterface& exportedInterface() const { return *exported_; }
    const XPCInterface& remoteInterface() const { return *remote_; }
    bool isConfigured() const { return exported_.has_value() || object_ != nullptr; }
    bool isResumed() const { return resumed_; }
    const std::shared_ptr<ExportedObject>& exportedObject() const { return object_; }

    const std::shared_ptr<FakeAgentProxy> agent = std::make_shared<FakeAgentProxy>();

  private:
    void requireUnresumed() const;

    int processIdentifier_;
    std::optional<XPCInterface> exported_;
    std::optional<XPCInterface> remote_;
    std::shared_ptr<ExportedObject> object_;
    std::function<void()> invalidated_;
    std::function<void(const std::string&)> refused_;
    bool resumed_ = false;
};

} // namespace vantor
