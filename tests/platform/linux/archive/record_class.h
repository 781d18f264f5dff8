#pragma once
// A class of the kind that frameworks bring: one payload under the key "Payload".

#include "platform/keyed_archive.h"
#include "platform/object_runtime.h"

#include <string>

namespace vantor {

class RecordClass final : public ObjectClass {
  public:
    explicit RecordClass(std::string name) : name_(std::move(name)) {}

    const std::string& name() const override { return name_; }
    bool isObjectSubclass() const override { return true; }
    bool respondsTo(std::string_view) const override { return false; }
    ObjectRef perform(std::string_view, const PropertyListDictionary&) const override {
        return nullptr;
    }
    /// Decodes to nothing, without an error of its own, when there is no payload.
    ObjectRef decodeInstance(KeyedDecoder& decoder) const override;

    ObjectRef make(PropertyList payload) const;

  private:
    const std::string name_;
};

class Record final : public Object {
  public:
    Record(const RecordClass& type, PropertyList content)
        : payload(std::move(content)), type_(type) {}

    const ObjectClass& objectClass() const override { return type_; }
    void encode(KeyedEncoder& encoder) const override {
        static_cast<void>(encoder.encodeEncodable(payload, "Payload"));
    }
    std::optional<PropertyList> valueForKey(std::string_view key) const override {
        return key == "payload" ? std::optional(payload) : std::nullopt;
    }

    const PropertyList payload;

  private:
    const RecordClass& type_;
};

inline ObjectRef RecordClass::make(PropertyList payload) const {
    return std::make_shared<Record>(*this, std::move(payload));
}

inline ObjectRef RecordClass::decodeInstance(KeyedDecoder& decoder) const {
    auto payload = decoder.decodeEncodable("Payload");
    return payload ? make(std::move(*payload)) : nullptr;
}

} // namespace vantor
