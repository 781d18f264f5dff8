#include "platform/darwin/native_ref.h"

#include <CoreFoundation/CoreFoundation.h>

namespace vantor::darwin {

void retainNative(const void* object) { CFRetain(object); }

void releaseNative(const void* object) { CFRelease(object); }

} // namespace vantor::darwin
