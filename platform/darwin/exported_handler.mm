#include "platform/darwin/darwin_xpc_connection.h"

#include "platform/darwin/agent_protocols.h"
#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/foundation.h"

namespace vantor::darwin {
namespace {

NSError* optionalError(const std::optional<Error>& error) { return error ? nsError(*error) : nil; }

/// Calls the one block that its operation's shape has; a Reply sends nothing else.
class BlockSink : public ReplySink {
  public:
    explicit BlockSink(VantorErrorReply reply) : error_(reply) {}
    explicit BlockSink(VantorObjectReply reply) : object_(reply) {}
    explicit BlockSink(VantorBooleanReply reply) : boolean_(reply) {}

    void error(const std::optional<Error>& error) override { error_(optionalError(error)); }
    void object(const ObjectRef& object, const std::optional<Error>& error) override {
        object_(native<id>(unwrap(object)), optionalError(error));
    }
    void boolean(bool value, const std::optional<Error>& error) override {
        boolean_(value ? YES : NO, optionalError(error));
    }

  private:
    VantorErrorReply error_ = nil;
    VantorObjectReply object_ = nil;
    VantorBooleanReply boolean_ = nil;
};

template <typename Block, typename... Arguments>
void forward(ExportedObject& object, WallpaperOperation operation, Block reply,
             Arguments... arguments) {
    object.invoke(operation, {wrap(nativeRef(arguments))...},
                  Reply(info(operation).reply, std::make_unique<BlockSink>(reply)));
}

} // namespace
} // namespace vantor::darwin

using vantor::darwin::forward;
using Operation = vantor::WallpaperOperation;

@interface VantorExportedHandler : NSObject <WallpaperExtensionXPCProtocol> {
    std::shared_ptr<vantor::ExportedObject> _object;
}
- (instancetype)initWithObject:(std::shared_ptr<vantor::ExportedObject>)object;
@end

@implementation VantorExportedHandler

- (instancetype)initWithObject:(std::shared_ptr<vantor::ExportedObject>)object {
    if ((self = [super init])) {
        _object = std::move(object);
    }
    return self;
}

- (void)acquireWithId:(id)identifier request:(id)request reply:(VantorObjectReply)reply {
    forward(*_object, Operation::acquire, reply, identifier, request);
}
- (void)updateWithId:(id)identifier request:(id)request reply:(VantorErrorReply)reply {
    forward(*_object, Operation::update, reply, identifier, request);
}
- (void)invalidateWithId:(id)identifier reply:(VantorErrorReply)reply {
    forward(*_object, Operation::invalidate, reply, identifier);
}
- (void)snapshotWithId:(id)identifier reply:(VantorObjectReply)reply {
    forward(*_object, Operation::snapshot, reply, identifier);
}
- (void)provideSettingsViewModelsWithContentTypes:(id)contentTypes reply:(VantorObjectReply)reply {
    forward(*_object, Operation::provideSettingsViewModels, reply, contentTypes);
}
- (void)addChoiceRequestWithChoiceRequest:(id)choiceRequest
                        onBehalfOfProcess:(id)process
                                    reply:(VantorObjectReply)reply {
    forward(*_object, Operation::addChoiceRequest, reply, choiceRequest, process);
}
- (void)removeChoiceRequestWithChoiceRequest:(id)choiceRequest reply:(VantorErrorReply)reply {
    forward(*_object, Operation::removeChoiceRequest, reply, choiceRequest);
}
- (void)selectedChoicesDidChangeFor:(id)choices reply:(VantorErrorReply)reply {
    forward(*_object, Operation::selectedChoicesDidChange, reply, choices);
}
- (void)invokeContextMenuActionWithMenuItemID:(id)menuItemID
                                  groupItemID:(id)groupItemID
                                        reply:(VantorErrorReply)reply {
    forward(*_object, Operation::invokeContextMenuAction, reply, menuItemID, groupItemID);
}
- (void)isChoiceDownloadedWith:(id)choiceID reply:(VantorBooleanReply)reply {
    forward(*_object, Operation::isChoiceDownloaded, reply, choiceID);
}
- (NSProgress*)downloadWithChoiceID:(id)choiceID reply:(VantorErrorReply)reply {
    forward(*_object, Operation::download, reply, choiceID);
    return nil;
}
- (void)pauseDownloadFor:(id)choiceID reply:(VantorErrorReply)reply {
    forward(*_object, Operation::pauseDownload, reply, choiceID);
}
- (void)cancelDownloadFor:(id)choiceID reply:(VantorErrorReply)reply {
    forward(*_object, Operation::cancelDownload, reply, choiceID);
}
- (void)resumeDownloadFor:(id)choiceID reply:(VantorErrorReply)reply {
    forward(*_object, Operation::resumeDownload, reply, choiceID);
}
- (void)removeDownloadFor:(id)choiceID reply:(VantorErrorReply)reply {
    forward(*_object, Operation::removeDownload, reply, choiceID);
}
- (void)migrateSelectedChoiceFor:(id)choice reply:(VantorObjectReply)reply {
    forward(*_object, Operation::migrateSelectedChoice, reply, choice);
}
- (void)migrateFrom:(id)from to:(id)to reply:(VantorErrorReply)reply {
    forward(*_object, Operation::migrate, reply, from, to);
}
- (void)skipShuffledContentWithId:(id)identifier reply:(VantorErrorReply)reply {
    forward(*_object, Operation::skipShuffledContent, reply, identifier);
}
- (void)canSkipShuffledContentWithId:(id)identifier reply:(VantorBooleanReply)reply {
    forward(*_object, Operation::canSkipShuffledContent, reply, identifier);
}
- (void)handleDebugRequestFor:(id)request reply:(VantorObjectReply)reply {
    forward(*_object, Operation::handleDebugRequest, reply, request);
}
- (void)handleNotificationWithNamed:(id)name reply:(VantorErrorReply)reply {
    forward(*_object, Operation::handleNotification, reply, name);
}

@end

namespace vantor::darwin {

NativeRef makeExportedHandler(std::shared_ptr<ExportedObject> object) {
    return nativeRef([[VantorExportedHandler alloc] initWithObject:std::move(object)]);
}

} // namespace vantor::darwin
