#pragma once
// Builds the binary form object by object. Objects are flat records in one buffer; equal objects
// (for dictionaries: the same keys in the same order) are one.

#include "platform/property_list.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vantor::archive {

class BinaryPropertyListWriter {
  public:
    /// Numbers an object in the order of first mention.
    using Reference = std::uint32_t;

    Reference boolean(bool value);
    Reference integer(std::int64_t value);
    Reference unsignedInteger(std::uint64_t value);
    Reference real(double value);
    Reference date(double secondsSince2001);
    Reference uid(std::uint32_t index);
    Reference data(std::span<const std::uint8_t> bytes);
    /// UTF-8; malformed bytes become U+FFFD.
    Reference string(std::string_view text);
    /// Whether an equal object that was written before stands for a container. Looking for one
    /// costs more than it gains where containers hardly ever equal.
    enum class Sharing : std::uint8_t { equal, none };
    Reference array(std::span<const Reference> elements, Sharing sharing = Sharing::equal);
    /// As many keys as values.
    Reference dictionary(std::span<const Reference> keys, std::span<const Reference> values,
                         Sharing sharing = Sharing::equal);
    Reference value(const PropertyList& value);

    /// The whole file.
    Bytes finish(Reference root) const;

  private:
    enum class Kind : std::uint8_t { leaf, array, dictionary };

    /// A leaf's encoded bytes stand in leafBytes_; a container's references in references_.
    struct Record {
        std::uint32_t start;
        std::uint32_t length;
        std::uint32_t hash;
        Kind kind;
    };

    /// Lengthens leafBytes_ by `count` bytes, which begin there.
    std::uint8_t* room(std::size_t count);
    void putBigEndian(std::uint64_t value, std::size_t size);
    void putCounted(std::uint8_t kind, std::size_t count);
    Reference finishLeaf(std::size_t start);
    Reference finishContainer(Kind kind, std::size_t start, Sharing sharing);
    Reference unique(Record record);
    bool equal(const Record& a, const Record& b) const;
    void grow();
    static std::size_t elementCount(const Record& record);

    Bytes leafBytes_;
    std::vector<Reference> references_;
    std::vector<Record> records_;
    /// Open addressing over the records that are shared; a power of two, at most half full. 0 is
    /// free, n is n - 1.
    std::vector<std::uint32_t> slots_;
    std::size_t shared_ = 0;
    /// By the index that an archive reference holds, 1 + its own reference; 0 is not known.
    std::vector<Reference> uids_;
    /// The elements of containers that are being built, innermost last.
    std::vector<Reference> stack_;
};

} // namespace vantor::archive
