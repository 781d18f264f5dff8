#include "platform/linux/archive/binary_property_list_writer.h"

#include "platform/linux/archive/binary_objects.h"
#include "platform/linux/archive/unicode.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace vantor::archive {
namespace {

std::size_t bytesFor(std::uint64_t value) {
    return value <= 0xff ? 1 : value <= 0xffff ? 2 : value <= 0xffffffff ? 4 : 8;
}

constexpr std::size_t kSmallestTable = 256;

/// The length of a marker with its count.
std::size_t markerSize(std::size_t count) { return count < 0x0f ? 1 : 2 + bytesFor(count); }

/// Writes into bytes that are there already.
class Sink {
  public:
    explicit Sink(std::uint8_t* to) : to_(to) {}

    void byte(std::uint8_t value) { *to_++ = value; }
    void bytes(const std::uint8_t* from, std::size_t count) {
        std::memcpy(to_, from, count);
        to_ += count;
    }
    void bigEndian(std::uint64_t value, std::size_t size) {
        for (std::size_t index = size; index-- > 0; value >>= 8) {
            to_[index] = static_cast<std::uint8_t>(value);
        }
        to_ += size;
    }
    void marker(std::uint8_t kind, std::size_t count) {
        if (count < 0x0f) {
            byte(static_cast<std::uint8_t>(kind | count));
            return;
        }
        const std::size_t size = bytesFor(count);
        byte(kind | 0x0f);
        byte(static_cast<std::uint8_t>(0x10 | std::countr_zero(size)));
        bigEndian(count, size);
    }

  private:
    std::uint8_t* to_;
};

template <typename Word>
std::uint64_t load(const std::uint8_t* bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

/// Eight bytes at a time, the last ones overlapping; the multiplier is that of MurmurHash64A
/// (Appleby). The tables are small and short-lived, and their keys our own.
std::uint32_t hashBytes(const std::uint8_t* bytes, std::size_t count, std::uint64_t seed) {
    constexpr std::uint64_t kMultiplier = 0xc6a4a7935bd1e995;
    std::uint64_t hash = seed + count;
    const auto mix = [&hash](std::uint64_t word) {
        hash = (hash ^ word) * kMultiplier;
        hash ^= hash >> 47;
    };
    const std::uint8_t* const end = bytes + count;
    for (; end - bytes > 8; bytes += 8) {
        mix(load<std::uint64_t>(bytes));
    }
    if (count >= 8) {
        mix(load<std::uint64_t>(end - 8));
    } else if (count >= 4) {
        mix(load<std::uint32_t>(bytes) | load<std::uint32_t>(end - 4) << 32);
    } else if (count > 0) {
        mix(bytes[0] | bytes[count / 2] << 8 | end[-1] << 16);
    }
    hash *= kMultiplier;
    return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

} // namespace

std::uint8_t* BinaryPropertyListWriter::room(std::size_t count) {
    leafBytes_.resize(leafBytes_.size() + count);
    return leafBytes_.data() + leafBytes_.size() - count;
}

void BinaryPropertyListWriter::putBigEndian(std::uint64_t value, std::size_t size) {
    Sink(room(size)).bigEndian(value, size);
}

void BinaryPropertyListWriter::putCounted(std::uint8_t kind, std::size_t count) {
    Sink(room(markerSize(count))).marker(kind, count);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::boolean(bool value) {
    const std::size_t start = leafBytes_.size();
    leafBytes_.push_back(value ? 0x09 : 0x08);
    return finishLeaf(start);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::integer(std::int64_t value) {
    const std::size_t start = leafBytes_.size();
    // Only the eight-byte form is signed.
    const std::size_t size = value < 0 ? 8 : bytesFor(static_cast<std::uint64_t>(value));
    leafBytes_.push_back(static_cast<std::uint8_t>(0x10 | std::countr_zero(size)));
    putBigEndian(static_cast<std::uint64_t>(value), size);
    return finishLeaf(start);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::unsignedInteger(std::uint64_t value) {
    if (value <= static_cast<std::uint64_t>(INT64_MAX)) {
        return integer(static_cast<std::int64_t>(value));
    }
    const std::size_t start = leafBytes_.size();
    leafBytes_.push_back(0x14);
    putBigEndian(0, 8);
    putBigEndian(value, 8);
    return finishLeaf(start);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::real(double value) {
    const std::size_t start = leafBytes_.size();
    leafBytes_.push_back(0x23);
    putBigEndian(std::bit_cast<std::uint64_t>(value), 8);
    return finishLeaf(start);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::date(double secondsSince2001) {
    const std::size_t start = leafBytes_.size();
    leafBytes_.push_back(0x33);
    putBigEndian(std::bit_cast<std::uint64_t>(secondsSince2001), 8);
    return finishLeaf(start);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::uid(std::uint32_t index) {
    // Archives refer to each of their objects many times, in the order of their making.
    if (index < uids_.size() && uids_[index] != 0) {
        return uids_[index] - 1;
    }
    const std::size_t start = leafBytes_.size();
    const std::size_t size = bytesFor(index);
    leafBytes_.push_back(static_cast<std::uint8_t>(0x80 | (size - 1)));
    putBigEndian(index, size);
    const Reference reference = finishLeaf(start);
    if (index <= records_.size()) {
        uids_.resize(std::max<std::size_t>(uids_.size(), index + 1));
        uids_[index] = reference + 1;
    }
    return reference;
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::data(std::span<const std::uint8_t> bytes) {
    const std::size_t start = leafBytes_.size();
    putCounted(0x40, bytes.size());
    leafBytes_.insert(leafBytes_.end(), bytes.begin(), bytes.end());
    return finishLeaf(start);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::string(std::string_view text) {
    const std::size_t start = leafBytes_.size();
    if (isASCII(text)) {
        putCounted(0x50, text.size());
        leafBytes_.insert(leafBytes_.end(), text.begin(), text.end());
        return finishLeaf(start);
    }
    std::size_t units = 0;
    bool valid = true;
    for (std::string_view rest = text; !rest.empty();) {
        units += takeCharacter(rest, valid) > 0xffff ? 2 : 1;
    }
    putCounted(0x60, units);
    for (std::string_view rest = text; !rest.empty();) {
        const char32_t character = takeCharacter(rest, valid);
        if (character > 0xffff) {
            putBigEndian(0xd800 + ((character - 0x10000) >> 10), 2);
            putBigEndian(0xdc00 + ((character - 0x10000) & 0x3ff), 2);
        } else {
            putBigEndian(character, 2);
        }
    }
    return finishLeaf(start);
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::array(std::span<const Reference> elements, Sharing sharing) {
    const std::size_t start = references_.size();
    references_.insert(references_.end(), elements.begin(), elements.end());
    return finishContainer(Kind::array, start, sharing);
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::dictionary(std::span<const Reference> keys,
                                     std::span<const Reference> values, Sharing sharing) {
    const std::size_t start = references_.size();
    references_.insert(references_.end(), keys.begin(), keys.end());
    references_.insert(references_.end(), values.begin(), values.end());
    return finishContainer(Kind::dictionary, start, sharing);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::value(const PropertyList& value) {
    if (const bool* flag = value.boolean()) {
        return boolean(*flag);
    }
    if (const std::int64_t* number = value.integer()) {
        return integer(*number);
    }
    if (const std::uint64_t* number = value.unsignedInteger()) {
        return unsignedInteger(*number);
    }
    if (const double* number = value.real()) {
        return real(*number);
    }
    if (const std::string* text = value.string()) {
        return string(*text);
    }
    if (const Bytes* bytes = value.data()) {
        return data(*bytes);
    }
    if (const PropertyList::Date* moment = value.date()) {
        return date(moment->seconds);
    }
    if (const PropertyList::UID* reference = value.uid()) {
        return uid(reference->index);
    }
    const std::size_t base = stack_.size();
    const auto built = [this, base](std::size_t from, std::size_t count) {
        return std::span<const Reference>(stack_).subspan(base + from, count);
    };
    Reference result = 0;
    if (const PropertyList::Array* elements = value.array()) {
        for (const PropertyList& element : *elements) {
            const Reference reference = this->value(element);
            stack_.push_back(reference);
        }
        result = array(built(0, elements->size()));
    } else {
        const PropertyList::Dictionary& entries = *value.dictionary();
        for (const PropertyListDictionary::Entry& entry : entries) {
            stack_.push_back(string(entry.key));
        }
        for (const PropertyListDictionary::Entry& entry : entries) {
            const Reference reference = this->value(entry.value);
            stack_.push_back(reference);
        }
        result = dictionary(built(0, entries.size()), built(entries.size(), entries.size()));
    }
    stack_.resize(base);
    return result;
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::finishLeaf(std::size_t start) {
    const std::size_t length = leafBytes_.size() - start;
    return unique({.start = static_cast<std::uint32_t>(start),
                   .length = static_cast<std::uint32_t>(length),
                   .hash = hashBytes(leafBytes_.data() + start, length, 0),
                   .kind = Kind::leaf});
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::finishContainer(Kind kind, std::size_t start, Sharing sharing) {
    const std::size_t length = references_.size() - start;
    Record record{.start = static_cast<std::uint32_t>(start),
                  .length = static_cast<std::uint32_t>(length),
                  .hash = 0,
                  .kind = kind};
    if (sharing == Sharing::none) {
        records_.push_back(record);
        return static_cast<Reference>(records_.size() - 1);
    }
    record.hash = hashBytes(reinterpret_cast<const std::uint8_t*>(references_.data() + start),
                            length * sizeof(Reference), static_cast<std::uint64_t>(kind));
    return unique(record);
}

bool BinaryPropertyListWriter::equal(const Record& a, const Record& b) const {
    if (a.hash != b.hash || a.kind != b.kind || a.length != b.length) {
        return false;
    }
    if (a.kind == Kind::leaf) {
        return std::memcmp(leafBytes_.data() + a.start, leafBytes_.data() + b.start, a.length) == 0;
    }
    return std::equal(references_.begin() + a.start, references_.begin() + a.start + a.length,
                      references_.begin() + b.start);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::unique(Record record) {
    if (2 * (shared_ + 1) > slots_.size()) {
        grow();
    }
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = record.hash & mask;; slot = (slot + 1) & mask) {
        if (slots_[slot] == 0) {
            records_.push_back(record);
            slots_[slot] = static_cast<std::uint32_t>(records_.size());
            ++shared_;
            return slots_[slot] - 1;
        }
        if (equal(records_[slots_[slot] - 1], record)) {
            // The new one's bytes are the last of their buffer.
            if (record.kind == Kind::leaf) {
                leafBytes_.resize(record.start);
            } else {
                references_.resize(record.start);
            }
            return slots_[slot] - 1;
        }
    }
}

void BinaryPropertyListWriter::grow() {
    const std::vector<std::uint32_t> old = std::exchange(
        slots_,
        std::vector<std::uint32_t>(std::max<std::size_t>(kSmallestTable, 2 * slots_.size())));
    const std::size_t mask = slots_.size() - 1;
    for (const std::uint32_t taken : old) {
        if (taken != 0) {
            std::size_t slot = records_[taken - 1].hash & mask;
            while (slots_[slot] != 0) {
                slot = (slot + 1) & mask;
            }
            slots_[slot] = taken;
        }
    }
}

Bytes BinaryPropertyListWriter::finish(Reference root) const {
    constexpr std::string_view kHeader = "bplist00";
    const std::size_t referenceSize = bytesFor(records_.empty() ? 0 : records_.size() - 1);
    std::vector<std::uint64_t> offsets;
    offsets.reserve(records_.size());
    std::size_t table = kHeader.size();
    for (const Record& record : records_) {
        offsets.push_back(table);
        table += record.kind == Kind::leaf
                     ? record.length
                     : markerSize(elementCount(record)) + record.length * referenceSize;
    }
    const std::size_t offsetSize = bytesFor(table);
    Bytes out(table + records_.size() * offsetSize + kTrailerSize);
    Sink sink(out.data());
    sink.bytes(reinterpret_cast<const std::uint8_t*>(kHeader.data()), kHeader.size());
    for (const Record& record : records_) {
        if (record.kind == Kind::leaf) {
            sink.bytes(leafBytes_.data() + record.start, record.length);
            continue;
        }
        sink.marker(record.kind == Kind::array ? 0xa0 : 0xd0, elementCount(record));
        for (std::uint32_t index = 0; index < record.length; ++index) {
            sink.bigEndian(references_[record.start + index], referenceSize);
        }
    }
    for (const std::uint64_t offset : offsets) {
        sink.bigEndian(offset, offsetSize);
    }
    sink.bigEndian(0, 6);
    sink.byte(static_cast<std::uint8_t>(offsetSize));
    sink.byte(static_cast<std::uint8_t>(referenceSize));
    sink.bigEndian(records_.size(), 8);
    sink.bigEndian(root, 8);
    sink.bigEndian(table, 8);
    return out;
}

std::size_t BinaryPropertyListWriter::elementCount(const Record& record) {
    return record.kind == Kind::array ? record.length : record.length / 2;
}

} // namespace vantor::archive
