#pragma once
// Objects as they cross a connection: each is the bytes of a keyed archive of its own. Any thread.

#include "platform/object_runtime.h"
#include "platform/property_list.h"
#include "platform/result.h"

#include <span>

namespace vantor {

/// The archive of an object: one of the agent's classes, or a plain string, number or data object.
Result<Bytes> archiveObject(const Object& object);

/// The object that the bytes hold. They may come from anywhere: size, object count, nesting and
/// expansion are bounded, and the root and everything below it must be of a class in `allowed`.
/// What fails gives an error whose message says why.
Result<ObjectRef> unarchiveObject(std::span<const std::uint8_t> archive,
                                  std::span<const ObjectClass* const> allowed,
                                  const ObjectRuntime& runtime);

} // namespace vantor
