#pragma once
// Classes found by name at run time, instances of them, and the generic view of an instance as a
// tree of labelled children.
//   Linux: classes registered by the platform and by loaded frameworks.
//   macOS: objc_getClass, performSelector:, valueForKey:, and Mirror through the Swift shim.

#include "platform/geometry.h"
#include "platform/property_list.h"
#include "platform/uuid.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

class KeyedDecoder;
class KeyedEncoder;
class Object;
class ObjectClass;
class ReflectedValue;

using ObjectRef = std::shared_ptr<Object>;
using ReflectedRef = std::shared_ptr<const ReflectedValue>;

struct ReflectedChild {
    std::optional<std::string> label;
    ReflectedRef value;
};

/// One node of a reflected object. The graph may be cyclic and as wide as the peer likes: whoever
/// walks it bounds the walk. A typed view succeeds only if the value is exactly of that kind.
class ReflectedValue {
  public:
    virtual ~ReflectedValue() = default;

    /// In order. Never null values.
    virtual std::vector<ReflectedChild> children() const = 0;
    virtual bool isEnumeration() const = 0;

    virtual std::optional<Bytes> asBytes() const = 0;
    virtual std::optional<UUID> asUUID() const = 0;
    virtual std::optional<Size> asSize() const = 0;
    virtual std::optional<double> asDouble() const = 0;
    virtual std::optional<std::uint32_t> asUInt32() const = 0;
    virtual std::optional<bool> asBoolean() const = 0;
    /// The absolute text of a file URL ("file:///…", percent-encoded).
    virtual std::optional<std::string> asFileURL() const = 0;

    /// The value in words; for an enumeration case without payload, the case's name.
    virtual std::string description() const = 0;
};

/// A class of the system or of a framework, known by name only. Lives as long as the process.
class ObjectClass {
  public:
    virtual ~ObjectClass() = default;

    virtual const std::string& name() const = 0;

    /// Derived from the runtime's root object class (as every usable class is).
    virtual bool isObjectSubclass() const = 0;

    virtual bool respondsTo(std::string_view classMethod) const = 0;
    /// Sends a class method that takes one dictionary and gives an object or nothing.
    /// Unknown methods give nothing.
    virtual ObjectRef perform(std::string_view classMethod,
                              const PropertyListDictionary& argument) const = 0;

    /// Makes an instance that reads itself from a keyed archive. Null when the archive does not
    /// hold what the class needs; the decoder then carries the error.
    virtual ObjectRef decodeInstance(KeyedDecoder& decoder) const = 0;
};

/// An instance. References are counted; an object may be released on any thread. The defaults are
/// those of an object that archives nothing, has no children and responds to nothing.
class Object {
  public:
    virtual ~Object() = default;

    virtual const ObjectClass& objectClass() const = 0;

    /// Writes the instance into a keyed archive under its own keys.
    virtual void encode(KeyedEncoder& encoder) const;

    /// The instance as a tree of labelled children; never null.
    virtual ReflectedRef reflect() const;

    /// The instance's own text if it is a string, else nothing.
    virtual std::optional<std::string> asString() const { return std::nullopt; }
    /// The instance in words.
    virtual std::string description() const;

    /// The property `key`, or nothing when the object has none of that name.
    virtual std::optional<PropertyList> valueForKey(std::string_view key) const;

    /// Sends a method with at most one object argument (null when it takes none).
    /// False when the object does not respond to it.
    virtual bool perform(std::string_view method, const ObjectRef& argument);
};

/// Any thread.
class ObjectRuntime {
  public:
    virtual ~ObjectRuntime() = default;

    /// The class of that name, or null. A framework loaded later can make it appear.
    virtual const ObjectClass* classNamed(std::string_view name) const = 0;
};

} // namespace vantor
