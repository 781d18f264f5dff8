#pragma once

#include "platform/object_runtime.h"

namespace vantor::darwin {

/// An object's mirror. The object is kept for as long as any part of the tree is.
ReflectedRef reflect(const void* object);

} // namespace vantor::darwin
