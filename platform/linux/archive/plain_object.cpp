#include "platform/linux/archive/plain_object.h"

#include "platform/linux/archive/archive_error.h"

#include "platform/keyed_archive.h"

#include <algorithm>

namespace vantor {
namespace {

class PlainObjectClass final : public ObjectClass {
  public:
    explicit PlainObjectClass(std::string_view name) : name_(name) {}

    const std::string& name() const override { return name_; }
    bool isObjectSubclass() const override { return true; }
    bool respondsTo(std::string_view) const override { return false; }
    ObjectRef perform(std::string_view, const PropertyListDictionary&) const override {
        return nullptr;
    }
    ObjectRef decodeInstance(KeyedDecoder& decoder) const override {
        decoder.failWithError(archive::cocoaError(
            archive::kCoderReadCorrupt, "the class \"" + name_ + "\" does not decode from keys"));
        return nullptr;
    }

  private:
    const std::string name_;
};

class PlainObject final : public Object {
  public:
    PlainObject(const ObjectClass& objectClass, PropertyList value)
        : objectClass_(objectClass), value_(std::move(value)) {}

    const ObjectClass& objectClass() const override { return objectClass_; }

    std::optional<std::string> asString() const override {
        const std::string* text = value_.string();
        return text != nullptr ? std::optional(*text) : std::nullopt;
    }

    std::string description() const override {
        if (const std::string* text = value_.string()) {
            return *text;
        }
        if (const bool* flag = value_.boolean()) {
            return *flag ? "1" : "0";
        }
        if (const std::int64_t* number = value_.integer()) {
            return std::to_string(*number);
        }
        if (const PropertyListDictionary* dictionary = value_.dictionary()) {
            const PropertyList* relative = dictionary->find("relative");
            if (relative != nullptr && relative->string() != nullptr) {
                return *relative->string();
            }
        }
        return Object::description();
    }

    std::optional<PropertyList> valueForKey(std::string_view key) const override {
        return key == kPlainValueKey ? std::optional(value_) : std::nullopt;
    }

  private:
    const ObjectClass& objectClass_;
    const PropertyList value_;
};

} // namespace

bool isPlainClassName(std::string_view name) {
    return std::find(kPlainClassNames.begin(), kPlainClassNames.end(), name) !=
           kPlainClassNames.end();
}

std::unique_ptr<const ObjectClass> makePlainClass(std::string_view name) {
    return isPlainClassName(name) ? std::make_unique<const PlainObjectClass>(name) : nullptr;
}

ObjectRef makePlainObject(const ObjectClass& objectClass, PropertyList value) {
    return std::make_shared<PlainObject>(objectClass, std::move(value));
}

} // namespace vantor
