#pragma once
// Objects as they cross a connection: each is the bytes of one keyed archive. Free of state; any
// thread.

#include "platform/object_runtime.h"
#include "platform/result.h"

#include <span>

namespace vantor {

/// The archive of an object: of a plain one its value, of any other what it encodes of itself.
Result<Bytes> archiveObject(const Object& object);

/// Reads an archive that comes from a peer. Size, objects, nesting and classes are checked first:
/// the root's class and every class named anywhere in the archive must be in `allowed` (plain
/// containers inside another object's record always may). The object is of a class in `allowed`.
/// `runtime` only words the refusal of a class that it does not know.
Result<ObjectRef> unarchiveObject(std::span<const std::uint8_t> archive,
                                  std::span<const ObjectClass* const> allowed,
                                  const ObjectRuntime& runtime);

} // namespace vantor
