#include "platform/object_runtime.h"

namespace vantor {
namespace {

class OpaqueReflection : public ReflectedValue {
  public:
    explicit OpaqueReflection(std::string description) : description_(std::move(description)) {}

    std::vector<ReflectedChild> children() const override { return {}; }
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
    std::string description_;
};

} // namespace

void Object::encode(KeyedEncoder&) const {}

ReflectedRef Object::reflect() const { return std::make_shared<OpaqueReflection>(description()); }

std::string Object::description() const { return "<" + objectClass().name() + ">"; }

std::optional<PropertyList> Object::valueForKey(std::string_view) const { return std::nullopt; }

bool Object::perform(std::string_view, const ObjectRef&) { return false; }

} // namespace vantor
