#include "agent/kit/payload_type.h"

#include <algorithm>
#include <cmath>

namespace vantor::agent {
namespace {

constexpr std::string_view kRelative = "relative";

const PayloadField* fieldNamed(const PayloadType& type, std::string_view name) {
    const auto it = std::find_if(type.fields.begin(), type.fields.end(),
                                 [name](const PayloadField& field) { return field.name == name; });
    return it == type.fields.end() ? nullptr : &*it;
}

const std::string* urlText(const PropertyList& value) {
    const PropertyListDictionary* url = value.dictionary();
    const PropertyList* relative = url != nullptr ? url->find(kRelative) : nullptr;
    return relative != nullptr ? relative->string() : nullptr;
}

std::optional<Size> sizeOf(const PropertyList& value) {
    const PropertyList::Array* pair = value.array();
    if (pair == nullptr || pair->size() != 2) {
        return std::nullopt;
    }
    const double* width = (*pair)[0].real();
    const double* height = (*pair)[1].real();
    if (width == nullptr || height == nullptr) {
        return std::nullopt;
    }
    return Size{.width = *width, .height = *height};
}

std::optional<std::string> within(std::string_view name, std::optional<std::string> inner) {
    if (inner) {
        inner->insert(0, std::string(name) + ": ");
    }
    return inner;
}

std::optional<std::string> recordMismatch(const PayloadType& type, const PropertyList& payload) {
    const PropertyListDictionary* record = payload.dictionary();
    if (record == nullptr) {
        return "is no record";
    }
    for (const PayloadField& field : type.fields) {
        const PropertyList* value = record->find(field.name);
        if (value == nullptr && field.presence == Presence::required) {
            return "lacks \"" + std::string(field.name) + "\"";
        }
        if (value != nullptr) {
            if (auto inner = mismatch(field.type, *value)) {
                return within(field.name, std::move(inner));
            }
        }
    }
    return std::nullopt;
}

std::optional<std::string> enumerationMismatch(const PayloadType& type,
                                               const PropertyList& payload) {
    const PropertyListDictionary* value = payload.dictionary();
    if (value == nullptr || value->size() != 1) {
        return "is not one case";
    }
    const PayloadField* chosen = fieldNamed(type, value->begin()->key);
    if (chosen == nullptr) {
        return "is no case of " + std::string(type.name);
    }
    return within(chosen->name, mismatch(chosen->type, value->begin()->value));
}

/// A size in points, of which no side is so long that an integer cannot hold it.
std::optional<std::string> sizeMismatch(const PropertyList& payload) {
    constexpr double kIntegerRange = 9223372036854775808.0; // 2^63
    const auto size = sizeOf(payload);
    if (!size) {
        return "is no size";
    }
    const auto holds = [](double side) { return std::abs(side) < kIntegerRange; };
    return holds(size->width) && holds(size->height)
               ? std::nullopt
               : std::optional<std::string>("is no finite size of 64-bit integers");
}

std::optional<std::string> unless(bool fits, std::string_view why) {
    return fits ? std::nullopt : std::optional<std::string>(why);
}

class PayloadReflection final : public ReflectedValue {
  public:
    PayloadReflection(const PayloadType& type, std::shared_ptr<const PropertyList> payload)
        : type_(type), payload_(std::move(payload)) {}

    std::vector<ReflectedChild> children() const override {
        std::vector<ReflectedChild> children;
        if (type_.kind == PayloadKind::list) {
            for (const PropertyList& element : *payload_->array()) {
                children.push_back(
                    {.label = std::nullopt, .value = child(*type_.element, element)});
            }
        } else if (type_.kind == PayloadKind::record) {
            for (const PayloadField& field : type_.fields) {
                if (const PropertyList* value = payload_->dictionary()->find(field.name)) {
                    children.push_back(
                        {.label = std::string(field.name), .value = child(field.type, *value)});
                }
            }
        } else if (type_.kind == PayloadKind::enumeration && !chosen().type.fields.empty()) {
            children.push_back(
                {.label = std::string(chosen().name),
                 .value = child(chosen().type, payload_->dictionary()->begin()->value)});
        }
        return children;
    }

    bool isEnumeration() const override { return type_.kind == PayloadKind::enumeration; }

    std::optional<Bytes> asBytes() const override {
        return type_.kind == PayloadKind::data ? std::optional(*payload_->data()) : std::nullopt;
    }

    std::optional<UUID> asUUID() const override {
        return type_.kind == PayloadKind::uuid ? UUID::parse(*payload_->string()) : std::nullopt;
    }

    std::optional<Size> asSize() const override {
        return type_.kind == PayloadKind::size ? sizeOf(*payload_) : std::nullopt;
    }

    std::optional<double> asDouble() const override {
        return type_.kind == PayloadKind::real ? std::optional(*payload_->real()) : std::nullopt;
    }

    std::optional<std::uint32_t> asUInt32() const override {
        return type_.kind == PayloadKind::uint32
                   ? std::optional(static_cast<std::uint32_t>(*payload_->integer()))
                   : std::nullopt;
    }

    std::optional<bool> asBoolean() const override {
        return type_.kind == PayloadKind::boolean ? std::optional(*payload_->boolean())
                                                  : std::nullopt;
    }

    std::optional<std::string> asFileURL() const override {
        if (type_.kind == PayloadKind::url && urlText(*payload_)->starts_with("file:///")) {
            return *urlText(*payload_);
        }
        return std::nullopt;
    }

    std::string description() const override {
        switch (type_.kind) {
        case PayloadKind::boolean:
            return *payload_->boolean() ? "true" : "false";
        case PayloadKind::integer:
        case PayloadKind::uint32:
            return std::to_string(*payload_->integer());
        case PayloadKind::real:
            return std::to_string(*payload_->real());
        case PayloadKind::text:
        case PayloadKind::uuid:
            return *payload_->string();
        case PayloadKind::url:
            return *urlText(*payload_);
        case PayloadKind::enumeration:
            return std::string(chosen().name);
        case PayloadKind::data:
            return std::to_string(payload_->data()->size()) + " bytes";
        case PayloadKind::size:
        case PayloadKind::list:
        case PayloadKind::record:
            break;
        }
        return std::string(type_.name);
    }

  private:
    const PayloadField& chosen() const {
        return *fieldNamed(type_, payload_->dictionary()->begin()->key);
    }

    ReflectedRef child(const PayloadType& type, const PropertyList& value) const {
        return reflectPayload(type, std::shared_ptr<const PropertyList>(payload_, &value));
    }

    const PayloadType& type_;
    const std::shared_ptr<const PropertyList> payload_;
};

} // namespace

std::optional<std::string> mismatch(const PayloadType& type, const PropertyList& payload) {
    switch (type.kind) {
    case PayloadKind::boolean:
        return unless(payload.boolean() != nullptr, "is no boolean");
    case PayloadKind::integer:
        return unless(payload.integer() != nullptr, "is no integer");
    case PayloadKind::uint32:
        return unless(payload.integer() != nullptr && *payload.integer() >= 0 &&
                          *payload.integer() <= INT64_C(0xffffffff),
                      "is no unsigned 32-bit integer");
    case PayloadKind::real:
        return unless(payload.real() != nullptr, "is no real");
    case PayloadKind::text:
        return unless(payload.string() != nullptr, "is no text");
    case PayloadKind::data:
        return unless(payload.data() != nullptr, "is no data");
    case PayloadKind::uuid:
        return unless(payload.string() != nullptr && UUID::parse(*payload.string()).has_value(),
                      "is no UUID");
    case PayloadKind::size:
        return sizeMismatch(payload);
    case PayloadKind::url:
        return unless(urlText(payload) != nullptr, "is no URL");
    case PayloadKind::record:
        return recordMismatch(type, payload);
    case PayloadKind::enumeration:
        return enumerationMismatch(type, payload);
    case PayloadKind::list:
        break;
    }
    if (payload.array() == nullptr) {
        return "is no list";
    }
    for (const PropertyList& element : *payload.array()) {
        if (auto inner = mismatch(*type.element, element)) {
            return within("an element", std::move(inner));
        }
    }
    return std::nullopt;
}

ReflectedRef reflectPayload(const PayloadType& type, std::shared_ptr<const PropertyList> payload) {
    return std::make_shared<PayloadReflection>(type, std::move(payload));
}

} // namespace vantor::agent
