#pragma once
// For the macOS side of the seam on GNUstep's Foundation: every file is compiled with this first.
// It renames the classes of NSXPCConnection.h, which GNUstep declares and does not implement, and
// adds what it does not declare; the test implements them.

#define NSXPCInterface VantorRecordingInterface
#define NSXPCConnection VantorRecordingConnection

#import <Foundation/Foundation.h>

@interface NSXPCConnection (Emulated)
- (void)setExportedInterface:(NSXPCInterface*)interface;
- (id)exportedObject;
- (void)setExportedObject:(id)object;
@end
