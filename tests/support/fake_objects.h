#pragma once
// Classes, objects and reflected values that tests put together.

#include "platform/keyed_archive.h"
#include "platform/object_runtime.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vantor {

/// A reflected value with the children and the one typed view that a test gives it.
class FakeReflected : public ReflectedValue {
  public:
    struct EnumerationCase {
        std::string name;
    };
    struct FileURL {
        std::string text;
    };
    using View = std::variant<std::monostate, Bytes, UUID, Size, double, std::uint32_t, bool,
                              FileURL, EnumerationCase, std::string>;

    static ReflectedRef leaf(View view);
    static ReflectedRef tree(std::vector<std::pair<std::string, ReflectedRef>> children);

    std::vector<ReflectedChild> children() const override { return children_; }
    bool isEnumeration() const override { return holds<EnumerationCase>(); }
    std::optional<Bytes> asBytes() const override { return view<Bytes>(); }
    std::optional<UUID> asUUID() const override { return view<UUID>(); }
    std::optional<Size> asSize() const override { return view<Size>(); }
    std::optional<double> asDouble() const override { return view<double>(); }
    std::optional<std::uint32_t> asUInt32() const override { return view<std::uint32_t>(); }
    std::optional<bool> asBoolean() const override { return view<bool>(); }
    std::optional<std::string> asFileURL() const override;
    std::string description() const override;

  private:
    template <typename T>
    bool holds() const {
        return std::holds_alternative<T>(view_);
    }
    template <typename T>
    std::optional<T> view() const {
        const T* value = std::get_if<T>(&view_);
        return value != nullptr ? std::optional<T>(*value) : std::nullopt;
    }

    View view_;
    std::vector<ReflectedChild> children_;
};

/// A class whose behaviour tests set; by default it has no class methods and decodes an instance
/// that keeps the graph under `payloadKey`.
class FakeObjectClass : public ObjectClass {
  public:
    explicit FakeObjectClass(std::string name) : name_(std::move(name)) {}

    const std::string& name() const override { return name_; }
    bool isObjectSubclass() const override { return objectSubclass; }
    bool respondsTo(std::string_view classMethod) const override {
        return classMethods.contains(classMethod);
    }
    ObjectRef perform(std::string_view classMethod,
                      const PropertyListDictionary& argument) const override;
    ObjectRef decodeInstance(KeyedDecoder& decoder) const override;

    bool objectSubclass = true;
    /// Decoding fails without it.
    std::string payloadKey;
    std::map<std::string, std::function<ObjectRef(const PropertyListDictionary&)>, std::less<>>
        classMethods;

  private:
    std::string name_;
};

/// An object with the properties that a test gives it. It remembers what it was sent.
class FakeObject : public Object {
  public:
    explicit FakeObject(const ObjectClass& objectClass) : class_(objectClass) {}

    const ObjectClass& objectClass() const override { return class_; }
    ReflectedRef reflect() const override;
    std::optional<std::string> asString() const override { return string; }
    std::string description() const override;
    std::optional<PropertyList> valueForKey(std::string_view key) const override;
    bool perform(std::string_view method, const ObjectRef& argument) override;

    /// How often the method was sent.
    std::size_t count(std::string_view method) const;

    ReflectedRef reflection;
    std::optional<std::string> string;
    std::optional<std::string> text;
    /// What it was decoded from.
    std::optional<PropertyList> payload;
    std::map<std::string, PropertyList, std::less<>> values;
    /// Methods that it responds to; the rest are refused.
    std::vector<std::string> methods;
    std::vector<std::pair<std::string, ObjectRef>> sent;

  private:
    const ObjectClass& class_;
};

/// The class "CAContext" with ascending identifiers, as remote layer contexts need it.
class FakeRemoteContextClass : public FakeObjectClass {
  public:
    FakeRemoteContextClass();

    /// None is made while set.
    bool refuses = false;
    /// The identifier of the next context.
    std::uint32_t nextID = 4711;
    /// The contexts in the order of their making, with the options each was made with.
    std::vector<std::shared_ptr<FakeObject>> contexts;
    std::vector<PropertyListDictionary> options;
};

} // namespace vantor
