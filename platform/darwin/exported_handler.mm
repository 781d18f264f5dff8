#include "platform/darwin/exported_handler.h"

#include "platform/darwin/agent_protocols.h"
#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/foundation.h"

#include <cstdlib>

namespace vantor::darwin {
namespace {

NSError* optionalError(const std::optional<Error>& error) { return error ? nsError(*error) : nil; }

/// Refuses the shapes that its operation does not have; a Reply never sends one.
class BlockSink : public ReplySink {
  public:
    void error(const std::optional<Error>&) override { std::abort(); }
    void object(const ObjectRef&, const std::optional<Error>&) override { std::abort(); }
    void boolean(bool, const std::optional<Error>&) override { std::abort(); }
};

class ErrorSink : public BlockSink {
  public:
    explicit ErrorSink(VantorErrorReply reply) : reply_([reply copy]) {}
    void error(const std::optional<Error>& error) override { reply_(optionalError(error)); }

  private:
    VantorErrorReply reply_;
};

class ObjectSink : public BlockSink {
  public:
    explicit ObjectSink(VantorObjectReply reply) : reply_([reply copy]) {}
    void object(const ObjectRef& object, const std::optional<Error>& error) override {
        reply_(native<id>(unwrap(object)), optionalError(error));
    }

  private:
    VantorObjectReply reply_;
};

class BooleanSink : public BlockSink {
  public:
    explicit BooleanSink(VantorBooleanReply reply) : reply_([reply copy]) {}
    void boolean(bool value, const std::optional<Error>& error) override {
        reply_(value ? YES : NO, optionalError(error));
    }

  private:
    VantorBooleanReply reply_;
};

Reply replyTo(VantorErrorReply block) {
    return {ReplyShape::error, std::make_unique<ErrorSink>(block)};
}
Reply replyTo(VantorObjectReply block) {
    return {ReplyShape::objectAndError, std::make_unique<ObjectSink>(block)};
}
Reply replyTo(VantorBooleanReply block) {
    return {ReplyShape::booleanAndError, std::make_unique<BooleanSink>(block)};
}

} // namespace
} // namespace vantor::darwin

using vantor::ExportedObject;
using vantor::WallpaperOperation;
using vantor::darwin::nativeRef;
using vantor::darwin::replyTo;
using vantor::darwin::wrap;

@interface VantorExportedHandler : NSObject <WallpaperExtensionXPCProtocol> {
    std::shared_ptr<ExportedObject> _object;
}
- (instancetype)initWithObject:(std::shared_ptr<ExportedObject>)object;
@end

@implementation VantorExportedHandler

- (instancetype)initWithObject:(std::shared_ptr<ExportedObject>)object {
    if ((self = [super init])) {
        _object = std::move(object);
    }
    return self;
}

- (void)acquireWithId:(id)identifier request:(id)request reply:(VantorObjectReply)reply {
    _object->invoke(WallpaperOperation::acquire,
                    {wrap(nativeRef(identifier)), wrap(nativeRef(request))}, replyTo(reply));
}

- (void)updateWithId:(id)identifier request:(id)request reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::update,
                    {wrap(nativeRef(identifier)), wrap(nativeRef(request))}, replyTo(reply));
}

- (void)invalidateWithId:(id)identifier reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::invalidate, {wrap(nativeRef(identifier))}, replyTo(reply));
}

- (void)snapshotWithId:(id)identifier reply:(VantorObjectReply)reply {
    _object->invoke(WallpaperOperation::snapshot, {wrap(nativeRef(identifier))}, replyTo(reply));
}

- (void)provideSettingsViewModelsWithContentTypes:(id)contentTypes reply:(VantorObjectReply)reply {
    _object->invoke(WallpaperOperation::provideSettingsViewModels, {wrap(nativeRef(contentTypes))},
                    replyTo(reply));
}

- (void)addChoiceRequestWithChoiceRequest:(id)choiceRequest
                        onBehalfOfProcess:(id)process
                                    reply:(VantorObjectReply)reply {
    _object->invoke(WallpaperOperation::addChoiceRequest,
                    {wrap(nativeRef(choiceRequest)), wrap(nativeRef(process))}, replyTo(reply));
}

- (void)removeChoiceRequestWithChoiceRequest:(id)choiceRequest reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::removeChoiceRequest, {wrap(nativeRef(choiceRequest))},
                    replyTo(reply));
}

- (void)selectedChoicesDidChangeFor:(id)choices reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::selectedChoicesDidChange, {wrap(nativeRef(choices))},
                    replyTo(reply));
}

- (void)invokeContextMenuActionWithMenuItemID:(id)menuItemID
                                  groupItemID:(id)groupItemID
                                        reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::invokeContextMenuAction,
                    {wrap(nativeRef(menuItemID)), wrap(nativeRef(groupItemID))}, replyTo(reply));
}

- (void)isChoiceDownloadedWith:(id)choiceID reply:(VantorBooleanReply)reply {
    _object->invoke(WallpaperOperation::isChoiceDownloaded, {wrap(nativeRef(choiceID))},
                    replyTo(reply));
}

- (NSProgress*)downloadWithChoiceID:(id)choiceID reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::download, {wrap(nativeRef(choiceID))}, replyTo(reply));
    return nil;
}

- (void)pauseDownloadFor:(id)choiceID reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::pauseDownload, {wrap(nativeRef(choiceID))}, replyTo(reply));
}

- (void)cancelDownloadFor:(id)choiceID reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::cancelDownload, {wrap(nativeRef(choiceID))},
                    replyTo(reply));
}

- (void)resumeDownloadFor:(id)choiceID reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::resumeDownload, {wrap(nativeRef(choiceID))},
                    replyTo(reply));
}

- (void)removeDownloadFor:(id)choiceID reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::removeDownload, {wrap(nativeRef(choiceID))},
                    replyTo(reply));
}

- (void)migrateSelectedChoiceFor:(id)choice reply:(VantorObjectReply)reply {
    _object->invoke(WallpaperOperation::migrateSelectedChoice, {wrap(nativeRef(choice))},
                    replyTo(reply));
}

- (void)migrateFrom:(id)from to:(id)to reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::migrate, {wrap(nativeRef(from)), wrap(nativeRef(to))},
                    replyTo(reply));
}

- (void)skipShuffledContentWithId:(id)identifier reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::skipShuffledContent, {wrap(nativeRef(identifier))},
                    replyTo(reply));
}

- (void)canSkipShuffledContentWithId:(id)identifier reply:(VantorBooleanReply)reply {
    _object->invoke(WallpaperOperation::canSkipShuffledContent, {wrap(nativeRef(identifier))},
                    replyTo(reply));
}

- (void)handleDebugRequestFor:(id)request reply:(VantorObjectReply)reply {
    _object->invoke(WallpaperOperation::handleDebugRequest, {wrap(nativeRef(request))},
                    replyTo(reply));
}

- (void)handleNotificationWithNamed:(id)name reply:(VantorErrorReply)reply {
    _object->invoke(WallpaperOperation::handleNotification, {wrap(nativeRef(name))},
                    replyTo(reply));
}

@end

namespace vantor::darwin {

NativeRef makeExportedHandler(std::shared_ptr<ExportedObject> object) {
    return nativeRef([[VantorExportedHandler alloc] initWithObject:std::move(object)]);
}

} // namespace vantor::darwin
