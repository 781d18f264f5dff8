#pragma once
// What the project uses of AppKit. Each group names the documentation page that its facts are from.

#include <Foundation/Foundation.h>
#include <QuartzCore/QuartzCore.h>

// Pages: "NSScreen", "deviceDescription", "displayLink(target:selector:)"
typedef NSString* NSDeviceDescriptionKey;
@interface NSScreen : NSObject
@property(class, readonly) NSArray<NSScreen*>* screens;
@property(readonly) NSDictionary<NSDeviceDescriptionKey, id>* deviceDescription;
- (CADisplayLink*)displayLinkWithTarget:(id)target selector:(SEL)selector;
@end

// Pages: "NSWorkspace", "urlForApplication(withBundleIdentifier:)",
// "openApplication(at:configuration:completionHandler:)", "NSWorkspace.OpenConfiguration"
@interface NSRunningApplication : NSObject
@end
@interface NSWorkspaceOpenConfiguration : NSObject
+ (instancetype)configuration;
@end
@interface NSWorkspace : NSObject
@property(class, readonly) NSWorkspace* sharedWorkspace;
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)bundleIdentifier;
- (void)openApplicationAtURL:(NSURL*)applicationURL
               configuration:(NSWorkspaceOpenConfiguration*)configuration
           completionHandler:(void (^)(NSRunningApplication* app, NSError* error))completionHandler;
@end
