#pragma once

#include "platform/darwin/native_ref.h"
#include "platform/object_runtime.h"

#include <functional>

namespace vantor::darwin {

/// Classes by name, and objects of them.
class DarwinObjectRuntime : public ObjectRuntime {
  public:
    const ObjectClass* classNamed(std::string_view name) const override;
};

/// The class that a native one stands for; the same for every call. Any thread.
const ObjectClass& objectClass(const void* nativeClass);
const ObjectClass& classOf(const NativeRef& object);
/// The native class behind one of the system's.
const void* nativeClass(const ObjectClass& objectClass);

/// An object's mirror. The object is kept for as long as any part of the tree is.
ReflectedRef reflect(const void* object);

/// The carriers' class name, which archives hold.
inline constexpr std::string_view kCarrierClassName = "VantorXPCCarrier";
/// A carrier, which archives itself by calling `encodeBody` with the NSKeyedArchiver, and owns it.
NativeRef makeCarrier(std::function<void(const void* archiver)> encodeBody);

/// Null for nothing.
ObjectRef wrap(NativeRef object);
/// What `object` stands for; nothing for null and for objects that are not the system's.
NativeRef unwrap(const ObjectRef& object);

} // namespace vantor::darwin
