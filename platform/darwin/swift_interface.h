// What Swift and C++ ask of each other. Some of the system's interfaces exist only in Swift: the
// app-extension runtime, and the reflection of values. Plain C; both sides include it.
#ifndef VANTOR_SWIFT_INTERFACE_H
#define VANTOR_SWIFT_INTERFACE_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// In LockScreenExtension.swift.

/// Runs the app-extension main. Null when it returns; else why it failed, to be freed.
char* VantorRunAppExtension(void);

/// A value with what its mirror shows; owned by whoever got it. All texts and bytes that are copied
/// out are the caller's to free.
typedef const void* VantorMirror;

/// Of an Objective-C or Swift object.
VantorMirror VantorMirrorCreate(const void* object);
void VantorMirrorRelease(VantorMirror mirror);

size_t VantorMirrorChildCount(VantorMirror mirror);
VantorMirror VantorMirrorCreateChild(VantorMirror mirror, size_t index);
/// Null for a child without a label.
char* VantorMirrorCopyChildLabel(VantorMirror mirror, size_t index);

bool VantorMirrorIsEnumeration(VantorMirror mirror);
char* VantorMirrorCopyDescription(VantorMirror mirror);

// The typed views: null or false unless the value is exactly of that kind.

uint8_t* VantorMirrorCopyBytes(VantorMirror mirror, size_t* count);
bool VantorMirrorGetUUID(VantorMirror mirror, uint8_t* sixteenBytes);
bool VantorMirrorGetSize(VantorMirror mirror, double* width, double* height);
bool VantorMirrorGetDouble(VantorMirror mirror, double* value);
bool VantorMirrorGetUInt32(VantorMirror mirror, uint32_t* value);
bool VantorMirrorGetBoolean(VantorMirror mirror, bool* value);
char* VantorMirrorCopyFileURL(VantorMirror mirror);

// In darwin_app_extension.cpp.

/// Constructs the principal object; once, on the main thread.
void VantorExtensionConstruct(void);
/// Offers an NSXPCConnection; true when it is served. Any thread.
bool VantorExtensionAccept(const void* connection);

#ifdef __cplusplus
}
#endif

#endif
