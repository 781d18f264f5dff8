#pragma once
// Records that say once which fields they have; keyed encoding, equality and hashing follow.
//
//   struct Point {
//       std::int64_t x = 0;
//       std::optional<std::string> name;
//       static constexpr auto fields() {
//           return std::tuple{Field{"x", &Point::x}, Field{"name", &Point::name}};
//       }
//   };
//
// An enumeration without payloads is an enum and a function `caseNames(Enum)` beside it that gives
// the names in the order of the values. One with payloads is a structure with a variant `payload`
// of records and an array `kCaseNames`, in the variant's order.
//
// The graph is the one that the platform's keyed encoding of records makes:
//   record       dictionary, a key per field in order; an absent optional field has no key
//   list         array
//   enumeration  dictionary with the case's name as its one key, and as its value the dictionary of
//                the case's payload, empty without one
//   file URL     dictionary with the key "relative", the absolute text
//   text, boolean, integer, data   as themselves

#include "bridge/file_url.h"
#include "platform/property_list.h"
#include "platform/result.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace vantor {

/// One field of a record: its key in the encoded form, and where it stands.
template <typename Record, typename Value>
struct Field {
    std::string_view name;
    Value Record::*member;
};
template <typename Record, typename Value>
Field(const char*, Value Record::*) -> Field<Record, Value>;

template <typename T>
concept KeyedRecord = requires {
    T::fields();
};

template <typename T>
concept CaseWithPayload = requires {
    T::kCaseNames;
};

template <typename T>
concept PlainCase = std::is_enum_v<T> && requires(T value) {
    caseNames(value);
};

template <KeyedRecord Record, typename Visit>
constexpr void forEachField(Visit visit) {
    std::apply([&](const auto&... field) { (visit(field), ...); }, Record::fields());
}

template <KeyedRecord Record>
bool operator==(const Record& a, const Record& b) {
    bool equal = true;
    forEachField<Record>(
        [&](const auto& field) { equal = equal && a.*(field.member) == b.*(field.member); });
    return equal;
}

template <CaseWithPayload Case>
bool operator==(const Case& a, const Case& b) {
    return a.payload == b.payload;
}

/// Mixes the values of one record after another into one number.
class RecordHasher {
  public:
    template <typename T>
    void add(const T& value) {
        if constexpr (KeyedRecord<T>) {
            forEachField<T>([&](const auto& field) { add(value.*(field.member)); });
        } else if constexpr (CaseWithPayload<T>) {
            mix(value.payload.index());
            std::visit([this](const auto& payload) { this->add(payload); }, value.payload);
        } else if constexpr (std::same_as<T, FileURL>) {
            add(value.path.native());
        } else {
            mix(std::hash<T>{}(value));
        }
    }
    template <typename T>
    void add(const std::optional<T>& value) {
        mix(value.has_value());
        if (value) {
            add(*value);
        }
    }
    template <typename T>
    void add(const std::vector<T>& values) {
        mix(values.size());
        for (const T& value : values) {
            add(value);
        }
    }

    std::size_t result() const { return state_; }

  private:
    /// The finaliser of SplitMix64 (Steele, Lea, Flood: Fast Splittable Pseudorandom Number
    /// Generators, 2014) over the running state.
    void mix(std::uint64_t value) {
        state_ += value + 0x9e3779b97f4a7c15;
        state_ = (state_ ^ (state_ >> 30)) * 0xbf58476d1ce4e5b9;
        state_ = (state_ ^ (state_ >> 27)) * 0x94d049bb133111eb;
        state_ ^= state_ >> 31;
    }

    std::uint64_t state_ = 0;
};

/// Turns one record into its graph. The first failure stays.
class RecordEncoder {
  public:
    template <typename T>
    PropertyList encode(const T& value) {
        if constexpr (KeyedRecord<T>) {
            PropertyListDictionary graph;
            graph.reserve(std::tuple_size_v<decltype(T::fields())>);
            forEachField<T>(
                [&](const auto& field) { append(graph, field.name, value.*(field.member)); });
            return graph;
        } else if constexpr (CaseWithPayload<T>) {
            return onlyKey(T::kCaseNames[value.payload.index()],
                           std::visit([this](const auto& payload) { return this->encode(payload); },
                                      value.payload));
        } else if constexpr (PlainCase<T>) {
            return onlyKey(caseNames(value)[static_cast<std::size_t>(value)],
                           PropertyListDictionary{});
        } else if constexpr (std::same_as<T, FileURL>) {
            return encodeURL(value);
        } else {
            return value;
        }
    }
    template <typename T>
    requires(!std::same_as<T, std::uint8_t>) PropertyList encode(const std::vector<T>& values) {
        PropertyList::Array list;
        list.reserve(values.size());
        for (const T& value : values) {
            list.push_back(encode(value));
        }
        return list;
    }

    const std::optional<Error>& failure() const { return failure_; }

  private:
    template <typename T>
    void append(PropertyListDictionary& graph, std::string_view key, const T& value) {
        graph.append(std::string(key), encode(value));
    }
    template <typename T>
    void append(PropertyListDictionary& graph, std::string_view key,
                const std::optional<T>& value) {
        if (value) {
            append(graph, key, *value);
        }
    }

    static PropertyList onlyKey(std::string_view key, PropertyList value) {
        PropertyListDictionary graph;
        graph.append(std::string(key), std::move(value));
        return graph;
    }

    PropertyList encodeURL(const FileURL& url) {
        auto text = url.absoluteString();
        if (!text) {
            if (!failure_) {
                failure_ = text.error();
            }
            return PropertyListDictionary{};
        }
        return onlyKey("relative", std::move(*text));
    }

    std::optional<Error> failure_;
};

/// The graph of a whole record, or why one of its values cannot be encoded.
template <KeyedRecord Record>
Result<PropertyList> encodeRecord(const Record& record) {
    RecordEncoder encoder;
    PropertyList graph = encoder.encode(record);
    if (encoder.failure()) {
        return Failure{*encoder.failure()};
    }
    return graph;
}

} // namespace vantor

template <vantor::KeyedRecord Record>
struct std::hash<Record> {
    std::size_t operator()(const Record& record) const {
        vantor::RecordHasher hasher;
        hasher.add(record);
        return hasher.result();
    }
};
