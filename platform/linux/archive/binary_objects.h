#pragma once
// The object table of a property list in the binary form ("bplist00"), read where it lies; its
// layout as published in CoreFoundation's open-source CFBinaryPList.c. Every offset, count and
// reference is checked against the bytes that are there when it is followed.

#include "platform/linux/archive/expansion_budget.h"
#include "platform/property_list.h"
#include "platform/result.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vantor::archive {

/// Bytes at the end, which say where the table lies.
constexpr std::size_t kTrailerSize = 32;

/// Borrows the bytes.
class BinaryObjects {
  public:
    /// Numbers an object; may be any number until it is followed.
    using Reference = std::uint64_t;

    /// The elements of an array, or the keys and then the values of a dictionary.
    struct Container {
        bool isDictionary = false;
        /// Elements, or entries.
        std::size_t count = 0;
        std::span<const std::uint8_t> references;
    };

    enum class Reading { done, malformed, exceeded };

    /// Checks header, trailer and the number of objects. The error continues a sentence about the
    /// list ("has …").
    static Result<BinaryObjects, std::string> open(std::span<const std::uint8_t> bytes);

    std::uint64_t count() const { return count_; }
    Reference top() const { return top_; }

    /// Nothing when the object is no container, or its elements are not all there.
    std::optional<Container> container(Reference object) const;
    bool isContainer(Reference object) const;
    /// Below the container's count, or twice that for a dictionary's values.
    Reference element(const Container& container, std::size_t index) const {
        return bigEndian(container.references.subspan(index * referenceSize_, referenceSize_));
    }
    /// The value under the first key that equals; `key` is ASCII. Nothing for an array.
    std::optional<Reference> find(const Container& dictionary, std::string_view key) const;

    /// The number that an archive reference holds; nothing for any other object.
    std::optional<std::uint32_t> uid(Reference object) const;
    /// Whether the object is that text, which is ASCII.
    bool isText(Reference object, std::string_view text) const;
    /// Reads text. `why` says what is wrong, if something is.
    Reading readText(Reference object, ExpansionBudget& budget, std::string& out,
                     std::string& why) const;
    /// Reads an object that is no container. Its bytes of text or data are taken from the budget,
    /// which has paid for the value itself.
    Reading readLeaf(Reference object, ExpansionBudget& budget, PropertyList& out,
                     std::string& why) const;

  private:
    using Bytes = std::span<const std::uint8_t>;

    explicit BinaryObjects(Bytes bytes) : bytes_(bytes) {}

    static std::uint64_t bigEndian(Bytes bytes) {
        std::uint64_t value = 0;
        for (const std::uint8_t byte : bytes) {
            value = (value << 8) | byte;
        }
        return value;
    }

    std::optional<std::string> readTrailer();
    Bytes objectBytes(Reference object) const;
    static std::optional<std::uint64_t> takeCount(Bytes& rest);
    static bool readInteger(Bytes rest, PropertyList& out, std::string& why);
    static bool readReal(Bytes rest, PropertyList& out, std::string& why);
    static bool readUID(Bytes rest, PropertyList& out, std::string& why);
    static Reading takeUnits(Bytes& rest, std::size_t unit, ExpansionBudget& budget,
                             std::string& why);
    static Reading readTextBytes(Bytes rest, ExpansionBudget& budget, std::string& out,
                                 std::string& why);

    Bytes bytes_;
    std::size_t objectsEnd_ = 0;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    Reference top_ = 0;
};

} // namespace vantor::archive
