// Where there is no Swift compiler, this lets the program be linked. It is never run: every
// function stops the process.

#include "platform/darwin/swift_interface.h"

#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void stop() {
    std::fputs("this build has no Swift part\n", stderr);
    std::abort();
}

} // namespace

char* VantorRunAppExtension() { stop(); }

VantorMirror VantorMirrorCreate(const void*) { stop(); }
void VantorMirrorRelease(VantorMirror) { stop(); }

size_t VantorMirrorChildCount(VantorMirror) { stop(); }
VantorMirror VantorMirrorCreateChild(VantorMirror, size_t) { stop(); }
char* VantorMirrorCopyChildLabel(VantorMirror, size_t) { stop(); }

bool VantorMirrorIsEnumeration(VantorMirror) { stop(); }
char* VantorMirrorCopyDescription(VantorMirror) { stop(); }

uint8_t* VantorMirrorCopyBytes(VantorMirror, size_t*) { stop(); }
bool VantorMirrorGetUUID(VantorMirror, uint8_t*) { stop(); }
bool VantorMirrorGetSize(VantorMirror, double*, double*) { stop(); }
bool VantorMirrorGetDouble(VantorMirror, double*) { stop(); }
bool VantorMirrorGetUInt32(VantorMirror, uint32_t*) { stop(); }
bool VantorMirrorGetBoolean(VantorMirror, bool*) { stop(); }
char* VantorMirrorCopyFileURL(VantorMirror) { stop(); }
