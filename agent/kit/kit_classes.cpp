#include "agent/kit/kit_classes.h"

#include "agent/kit/payload_types.h"
#include "platform/keyed_archive.h"

#include <memory>
#include <vector>

namespace vantor::agent {
namespace {

// Foundation's published numbers for decoding failures.
constexpr const char* kErrorDomain = "NSCocoaErrorDomain";
constexpr int kReadCorrupt = 4864;
constexpr int kValueNotFound = 4865;

/// An object around one value: the agent's objects are opaque but for what they carry.
class ObjectReflection final : public ReflectedValue {
  public:
    ObjectReflection(std::string description, ReflectedRef value)
        : description_(std::move(description)), value_(std::move(value)) {}

    std::vector<ReflectedChild> children() const override {
        return {{.label = "value", .value = value_}};
    }
    bool isEnumeration() const override { return false; }
    std::optional<Bytes> asBytes() const override { return std::nullopt; }
    std::optional<UUID> asUUID() const override { return std::nullopt; }
    std::optional<Size> asSize() const override { return std::nullopt; }
    std::optional<double> asDouble() const override { return std::nullopt; }
    std::optional<std::uint32_t> asUInt32() const override { return std::nullopt; }
    std::optional<bool> asBoolean() const override { return std::nullopt; }
    std::optional<std::string> asFileURL() const override { return std::nullopt; }
    std::string description() const override { return description_; }

  private:
    const std::string description_;
    const ReflectedRef value_;
};

class KitClass;

class KitObject final : public Object {
  public:
    KitObject(const KitClass& objectClass, PropertyList payload)
        : class_(objectClass), payload_(std::make_shared<PropertyList>(std::move(payload))) {}

    const ObjectClass& objectClass() const override;
    void encode(KeyedEncoder& encoder) const override;
    ReflectedRef reflect() const override;
    const PropertyList& payload() const { return *payload_; }

  private:
    const KitClass& class_;
    const std::shared_ptr<const PropertyList> payload_;
};

class KitClass final : public ObjectClass {
  public:
    explicit KitClass(const KitClassInfo& kitInfo) : info(kitInfo), name_(kitInfo.className) {}

    const std::string& name() const override { return name_; }
    bool isObjectSubclass() const override { return true; }
    bool respondsTo(std::string_view) const override { return false; }
    ObjectRef perform(std::string_view, const PropertyListDictionary&) const override {
        return nullptr;
    }

    ObjectRef decodeInstance(KeyedDecoder& decoder) const override {
        const std::string key = "\"" + std::string(info.payloadKey) + "\"";
        if (!decoder.containsValue(info.payloadKey)) {
            decoder.failWithError({.domain = kErrorDomain,
                                   .code = kValueNotFound,
                                   .message = name_ + " finds no value for the key " + key});
            return nullptr;
        }
        auto payload = decoder.decodeEncodable(info.payloadKey);
        const auto flaw = payload ? mismatch(info.payload, *payload) : "is no record";
        if (flaw) {
            decoder.failWithError({.domain = kErrorDomain,
                                   .code = kReadCorrupt,
                                   .message = name_ + " cannot read " + key + ": " + *flaw});
            return nullptr;
        }
        return std::make_shared<KitObject>(*this, std::move(*payload));
    }

    const KitClassInfo& info;

  private:
    const std::string name_;
};

const ObjectClass& KitObject::objectClass() const { return class_; }

void KitObject::encode(KeyedEncoder& encoder) const {
    // The payload fits its type, and no type holds what cannot be archived.
    static_cast<void>(encoder.encodeEncodable(*payload_, class_.info.payloadKey));
}

ReflectedRef KitObject::reflect() const {
    return std::make_shared<ObjectReflection>(description(),
                                              reflectPayload(class_.info.payload, payload_));
}

using KitClasses = std::vector<std::unique_ptr<const KitClass>>;

const KitClasses& kitClasses() {
    // Never destroyed: objects of these classes may be let go while the process ends.
    static const KitClasses& classes = *[] {
        auto* made = new KitClasses;
        for (const KitClassInfo& info : kitClassInfos()) {
            made->push_back(std::make_unique<const KitClass>(info));
        }
        return made;
    }();
    return classes;
}

const KitClass* find(std::string_view name) {
    for (const auto& candidate : kitClasses()) {
        if (candidate->name() == name) {
            return candidate.get();
        }
    }
    return nullptr;
}

} // namespace

const ObjectClass* kitClass(std::string_view name) { return find(name); }

ObjectRef makeKitObject(std::string_view className, PropertyList payload) {
    const KitClass* objectClass = find(className);
    if (objectClass == nullptr || mismatch(objectClass->info.payload, payload)) {
        return nullptr;
    }
    return std::make_shared<KitObject>(*objectClass, std::move(payload));
}

const PropertyList* kitPayload(const Object& object) {
    const auto* known = dynamic_cast<const KitObject*>(&object);
    return known != nullptr ? &known->payload() : nullptr;
}

void registerKitClasses(ClassRegistrar& registrar) {
    for (const auto& objectClass : kitClasses()) {
        registrar.registerClass(*objectClass);
    }
}

} // namespace vantor::agent
