#include "platform/darwin/darwin_xpc_connection.h"

#include "platform/darwin/agent_protocols.h"
#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/foundation.h"

#include <cstdio>
#include <cstdlib>

namespace vantor::darwin {
namespace {

Protocol* protocolNamed(std::string_view name) {
    if (name == kWallpaperProtocolName) {
        return @protocol(WallpaperExtensionXPCProtocol);
    }
    if (name == kAgentProtocolName) {
        return @protocol(WallpaperExtensionProxyXPCProtocol);
    }
    return nil;
}

NSXPCInterface* foundationInterface(const XPCInterface& interface) {
    Protocol* protocol = protocolNamed(interface.protocolName());
    if (protocol == nil) {
        std::fputs("an interface is of a protocol that nobody declares\n", stderr);
        std::abort();
    }
    NSXPCInterface* made = [NSXPCInterface interfaceWithProtocol:protocol];
    for (const ArgumentSlot& slot : wallpaperArgumentSlots()) {
        const auto allowed = interface.classes(slot);
        if (allowed.empty()) {
            continue;
        }
        NSMutableSet* classes = [NSMutableSet setWithCapacity:allowed.size()];
        for (const ObjectClass* objectClass : allowed) {
            [classes addObject:(__bridge Class)nativeClass(*objectClass)];
        }
        [made setClasses:classes
              forSelector:NSSelectorFromString(nsString(slot.selector))
            argumentIndex:static_cast<NSUInteger>(slot.argumentIndex)
                  ofReply:slot.ofReply ? YES : NO];
    }
    return made;
}

class RemoteAgent : public AgentProxy {
  public:
    explicit RemoteAgent(id proxy) : proxy_(proxy) {}

    bool conformsTo(std::string_view protocolName) const override {
        Protocol* protocol = protocolNamed(protocolName);
        return protocol != nil && [proxy_ conformsToProtocol:protocol];
    }

    void updateSettingsViewModels(const ObjectRef& viewModels,
                                  std::function<void(std::optional<Error>)> reply) override {
        // Exactly one of the two blocks is called.
        const auto answered =
            std::make_shared<std::function<void(std::optional<Error>)>>(std::move(reply));
        id<WallpaperExtensionProxyXPCProtocol> agent = [static_cast<id<NSXPCProxyCreating>>(proxy_)
            remoteObjectProxyWithErrorHandler:^(NSError* error) {
              (*answered)(errorOf(error));
            }];
        [agent updateSettingsViewModels:darwin::native<id>(unwrap(viewModels))
                                  reply:^(NSError* error) {
                                    (*answered)(error != nil ? std::optional(errorOf(error))
                                                             : std::nullopt);
                                  }];
    }

  private:
    id proxy_;
};

class DarwinXPCConnection : public XPCConnection {
  public:
    explicit DarwinXPCConnection(NSXPCConnection* connection) : connection_(connection) {}

    int processIdentifier() const override { return connection_.processIdentifier; }
    void setExportedInterface(XPCInterface interface) override {
        connection_.exportedInterface = foundationInterface(interface);
    }
    void setRemoteObjectInterface(XPCInterface interface) override {
        connection_.remoteObjectInterface = foundationInterface(interface);
    }
    void setExportedObject(std::shared_ptr<ExportedObject> object) override {
        connection_.exportedObject = darwin::native<id>(makeExportedHandler(std::move(object)));
    }
    std::shared_ptr<AgentProxy> remoteObjectProxy() override {
        id proxy = connection_.remoteObjectProxy;
        return proxy != nil ? std::make_shared<RemoteAgent>(proxy) : nullptr;
    }
    void setInvalidationHandler(std::function<void()> handler) override {
        // The block keeps the connection until the peer is gone, and is itself let go then.
        NSXPCConnection* connection = connection_;
        connection_.invalidationHandler = ^{
          handler();
          connection.invalidationHandler = nil;
        };
    }
    /// The system logs what it refuses.
    void setRefusalHandler(std::function<void(const std::string&)>) override {}
    void resume() override { [connection_ resume]; }

  private:
    NSXPCConnection* connection_;
};

} // namespace

std::shared_ptr<XPCConnection> makeXPCConnection(NativeRef connection) {
    return std::make_shared<DarwinXPCConnection>(darwin::native<NSXPCConnection*>(connection));
}

} // namespace vantor::darwin
