#pragma once
// Property lists: the value tree that state files, keyed archives and records are made of, and the
// seam's reader and writer of the encoded forms.
//   Linux: own bounded readers of the binary, XML and OpenStep forms, own binary writer.
//   macOS: NSPropertyListSerialization.

#include "platform/result.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vantor {

class PropertyList;

using Bytes = std::vector<std::uint8_t>;

/// A dictionary with text keys that keeps the order of insertion. Look-up is linear: property
/// lists hold few keys, and an untrusted one costs no more than its size for each look-up.
class PropertyListDictionary {
  public:
    struct Entry;

    PropertyListDictionary();
    PropertyListDictionary(std::initializer_list<Entry> entries);
    PropertyListDictionary(const PropertyListDictionary&);
    PropertyListDictionary(PropertyListDictionary&&) noexcept;
    PropertyListDictionary& operator=(const PropertyListDictionary&);
    PropertyListDictionary& operator=(PropertyListDictionary&&) noexcept;
    ~PropertyListDictionary();

    std::size_t size() const;
    bool empty() const { return size() == 0; }
    const Entry* begin() const;
    const Entry* end() const;

    /// The first value under `key`, or null. Valid until the dictionary changes.
    const PropertyList* find(std::string_view key) const;
    /// Replaces the value under `key`, or appends it.
    void set(std::string_view key, PropertyList value);
    void reserve(std::size_t count);
    /// Appends without looking for the key; for readers and builders that know it is new. Gives the
    /// value in its place, which is valid until the dictionary changes.
    PropertyList& append(std::string key, PropertyList value);
    /// Removes `key`; false when there is none.
    bool erase(std::string_view key);

    /// The same keys with equal values, in any order.
    bool operator==(const PropertyListDictionary& other) const;

  private:
    std::vector<Entry> entries_;
};

/// One value of a property list. A plain value: copied deeply, moved cheaply.
class PropertyList {
  public:
    using Array = std::vector<PropertyList>;
    using Dictionary = PropertyListDictionary;

    /// Seconds since 2001-01-01T00:00:00Z.
    struct Date {
        double seconds = 0;
        bool operator==(const Date&) const = default;
    };
    /// A reference to an object of a keyed archive.
    struct UID {
        std::uint32_t index = 0;
        bool operator==(const UID&) const = default;
    };

    /// An empty dictionary.
    PropertyList() : value_(Dictionary{}) {}
    PropertyList(bool value) : value_(value) {}
    PropertyList(int value) : value_(std::int64_t{value}) {}
    PropertyList(std::int64_t value) : value_(value) {}
    PropertyList(std::uint32_t value) : value_(std::int64_t{value}) {}
    /// Values above the signed range are kept as unsigned; all others are signed.
    PropertyList(std::uint64_t value);
    PropertyList(double value) : value_(value) {}
    /// UTF-8 text.
    PropertyList(std::string value) : value_(std::move(value)) {}
    PropertyList(std::string_view value) : value_(std::string(value)) {}
    PropertyList(const char* value) : value_(std::string(value)) {}
    PropertyList(Bytes value) : value_(std::move(value)) {}
    PropertyList(Date value) : value_(value) {}
    PropertyList(UID value) : value_(value) {}
    PropertyList(Array value) : value_(std::move(value)) {}
    PropertyList(Dictionary value) : value_(std::move(value)) {}
    /// A pointer is no boolean.
    template <typename T>
    PropertyList(const T*) = delete;

    // Each view gives null when the value is of another kind; nothing converts.
    const bool* boolean() const { return std::get_if<bool>(&value_); }
    const std::int64_t* integer() const { return std::get_if<std::int64_t>(&value_); }
    /// Only integers above the signed range.
    const std::uint64_t* unsignedInteger() const { return std::get_if<std::uint64_t>(&value_); }
    const double* real() const { return std::get_if<double>(&value_); }
    const std::string* string() const { return std::get_if<std::string>(&value_); }
    const Bytes* data() const { return std::get_if<Bytes>(&value_); }
    const Date* date() const { return std::get_if<Date>(&value_); }
    const UID* uid() const { return std::get_if<UID>(&value_); }
    const Array* array() const { return std::get_if<Array>(&value_); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&value_); }
    Array* array() { return std::get_if<Array>(&value_); }
    Dictionary* dictionary() { return std::get_if<Dictionary>(&value_); }

    /// Any number (boolean, integer or real) as a double; false when the value is no number.
    bool numberAsDouble(double& out) const;

    bool operator==(const PropertyList& other) const { return value_ == other.value_; }

  private:
    std::variant<bool, std::int64_t, std::uint64_t, double, std::string, Bytes, Date, UID, Array,
                 Dictionary>
        value_;
};

struct PropertyListDictionary::Entry {
    std::string key;
    PropertyList value;
    bool operator==(const Entry&) const = default;
};

/// The encoded forms. Free of state; any thread.
class PropertyListSerialization {
  public:
    virtual ~PropertyListSerialization() = default;

    /// Reads any encoding (binary, XML, OpenStep text). The bytes may come from anywhere: size,
    /// depth, object count and the expansion of shared references are bounded, and what breaks a
    /// bound or the format gives an error whose message says what and where.
    virtual Result<PropertyList> read(std::span<const std::uint8_t> bytes) = 0;

    /// The binary form, equal objects written once.
    virtual Bytes writeBinary(const PropertyList& root) = 0;
};

} // namespace vantor
