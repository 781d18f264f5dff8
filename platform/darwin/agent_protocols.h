#pragma once
// The wallpaper agent's protocols as the Objective-C runtime must know them. Selectors, order and
// reply shapes are those of platform/wallpaper_protocol.h; a test holds the two together.

#import <Foundation/Foundation.h>

typedef void (^VantorErrorReply)(NSError* error);
typedef void (^VantorObjectReply)(id object, NSError* error);
typedef void (^VantorBooleanReply)(BOOL value, NSError* error);

/// What the extension exports. Every argument is an object of one of the agent's classes, or nil.
@protocol WallpaperExtensionXPCProtocol
- (void)acquireWithId:(id)identifier request:(id)request reply:(VantorObjectReply)reply;
- (void)updateWithId:(id)identifier request:(id)request reply:(VantorErrorReply)reply;
- (void)invalidateWithId:(id)identifier reply:(VantorErrorReply)reply;
- (void)snapshotWithId:(id)identifier reply:(VantorObjectReply)reply;
- (void)provideSettingsViewModelsWithContentTypes:(id)contentTypes reply:(VantorObjectReply)reply;
- (void)addChoiceRequestWithChoiceRequest:(id)choiceRequest
                        onBehalfOfProcess:(id)process
                                    reply:(VantorObjectReply)reply;
- (void)removeChoiceRequestWithChoiceRequest:(id)choiceRequest reply:(VantorErrorReply)reply;
- (void)selectedChoicesDidChangeFor:(id)choices reply:(VantorErrorReply)reply;
- (void)invokeContextMenuActionWithMenuItemID:(id)menuItemID
                                  groupItemID:(id)groupItemID
                                        reply:(VantorErrorReply)reply;
- (void)isChoiceDownloadedWith:(id)choiceID reply:(VantorBooleanReply)reply;
- (NSProgress*)downloadWithChoiceID:(id)choiceID reply:(VantorErrorReply)reply;
- (void)pauseDownloadFor:(id)choiceID reply:(VantorErrorReply)reply;
- (void)cancelDownloadFor:(id)choiceID reply:(VantorErrorReply)reply;
- (void)resumeDownloadFor:(id)choiceID reply:(VantorErrorReply)reply;
- (void)removeDownloadFor:(id)choiceID reply:(VantorErrorReply)reply;
- (void)migrateSelectedChoiceFor:(id)choice reply:(VantorObjectReply)reply;
- (void)migrateFrom:(id)from to:(id)to reply:(VantorErrorReply)reply;
- (void)skipShuffledContentWithId:(id)identifier reply:(VantorErrorReply)reply;
- (void)canSkipShuffledContentWithId:(id)identifier reply:(VantorBooleanReply)reply;
- (void)handleDebugRequestFor:(id)request reply:(VantorObjectReply)reply;
- (void)handleNotificationWithNamed:(id)name reply:(VantorErrorReply)reply;
@end

/// What the agent's proxy offers.
@protocol WallpaperExtensionProxyXPCProtocol
- (void)pingWithId:(id)identifier;
- (void)updateSettingsViewModels:(id)viewModels reply:(VantorErrorReply)reply;
- (void)requestReadOnlyAccessTo:(id)url reply:(VantorErrorReply)reply;
- (void)invalidateSnapshotsWithReply:(VantorErrorReply)reply;
@end
