#include "platform/linux/archive/binary_property_list_writer.h"

#include "platform/linux/archive/unicode.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vantor::archive {
namespace {

std::size_t bytesFor(std::uint64_t value) {
    return value <= 0xff ? 1 : value <= 0xffff ? 2 : value <= 0xffffffff ? 4 : 8;
}

void append(Bytes& out, std::uint64_t value, std::size_t size) {
    for (std::size_t index = size; index-- > 0;) {
        out.push_back(static_cast<std::uint8_t>(value >> (8 * index)));
    }
}

void appendMarker(Bytes& out, std::uint8_t kind, std::size_t count) {
    if (count < 0x0f) {
        out.push_back(static_cast<std::uint8_t>(kind | count));
        return;
    }
    const std::size_t size = bytesFor(count);
    out.push_back(kind | 0x0f);
    out.push_back(static_cast<std::uint8_t>(0x10 | std::countr_zero(size)));
    append(out, count, size);
}

/// FNV-1a; the tables are small and short-lived, and their keys our own.
std::uint32_t hashBytes(std::span<const std::uint8_t> bytes) {
    std::uint32_t hash = 2166136261U;
    for (const std::uint8_t byte : bytes) {
        hash = (hash ^ byte) * 16777619U;
    }
    return hash;
}

} // namespace

void BinaryPropertyListWriter::putBigEndian(std::uint64_t value, std::size_t size) {
    append(leafBytes_, value, size);
}

void BinaryPropertyListWriter::putCounted(std::uint8_t kind, std::size_t count) {
    appendMarker(leafBytes_, kind, count);
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
    const std::size_t start = leafBytes_.size();
    const std::size_t size = bytesFor(index);
    leafBytes_.push_back(static_cast<std::uint8_t>(0x80 | (size - 1)));
    putBigEndian(index, size);
    return finishLeaf(start);
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
BinaryPropertyListWriter::array(std::span<const Reference> elements) {
    const std::size_t start = references_.size();
    references_.insert(references_.end(), elements.begin(), elements.end());
    return finishContainer(Kind::array, start);
}

BinaryPropertyListWriter::Reference
BinaryPropertyListWriter::dictionary(std::span<const Reference> keys,
                                     std::span<const Reference> values) {
    const std::size_t start = references_.size();
    references_.insert(references_.end(), keys.begin(), keys.end());
    references_.insert(references_.end(), values.begin(), values.end());
    return finishContainer(Kind::dictionary, start);
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
    const auto encoded = std::span<const std::uint8_t>(leafBytes_).subspan(start);
    return unique({.start = static_cast<std::uint32_t>(start),
                   .length = static_cast<std::uint32_t>(encoded.size()),
                   .hash = hashBytes(encoded),
                   .kind = Kind::leaf});
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::finishContainer(Kind kind,
                                                                              std::size_t start) {
    std::uint32_t hash = 2166136261U + static_cast<std::uint32_t>(kind);
    for (std::size_t index = start; index < references_.size(); ++index) {
        hash = (hash ^ references_[index]) * 16777619U;
        hash ^= hash >> 15;
    }
    return unique({.start = static_cast<std::uint32_t>(start),
                   .length = static_cast<std::uint32_t>(references_.size() - start),
                   .hash = hash,
                   .kind = kind});
}

bool BinaryPropertyListWriter::equal(const Record& a, const Record& b) const {
    if (a.hash != b.hash || a.kind != b.kind || a.length != b.length) {
        return false;
    }
    if (a.kind == Kind::leaf) {
        return std::equal(leafBytes_.begin() + a.start, leafBytes_.begin() + a.start + a.length,
                          leafBytes_.begin() + b.start);
    }
    return std::equal(references_.begin() + a.start, references_.begin() + a.start + a.length,
                      references_.begin() + b.start);
}

BinaryPropertyListWriter::Reference BinaryPropertyListWriter::unique(Record record) {
    if (2 * (records_.size() + 1) > slots_.size()) {
        grow();
    }
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = record.hash & mask;; slot = (slot + 1) & mask) {
        if (slots_[slot] == 0) {
            records_.push_back(record);
            slots_[slot] = static_cast<std::uint32_t>(records_.size());
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
    slots_.assign(std::max<std::size_t>(64, 2 * slots_.size()), 0);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t index = 0; index < records_.size(); ++index) {
        std::size_t slot = records_[index].hash & mask;
        while (slots_[slot] != 0) {
            slot = (slot + 1) & mask;
        }
        slots_[slot] = static_cast<std::uint32_t>(index + 1);
    }
}

Bytes BinaryPropertyListWriter::finish(Reference root) const {
    const std::size_t referenceSize = bytesFor(records_.empty() ? 0 : records_.size() - 1);
    Bytes out;
    out.reserve(leafBytes_.size() + references_.size() * referenceSize + records_.size() * 8 + 64);
    for (const char character : std::string_view("bplist00")) {
        out.push_back(static_cast<std::uint8_t>(character));
    }
    std::vector<std::uint64_t> offsets;
    offsets.reserve(records_.size());
    for (const Record& record : records_) {
        offsets.push_back(out.size());
        if (record.kind == Kind::leaf) {
            out.insert(out.end(), leafBytes_.begin() + record.start,
                       leafBytes_.begin() + record.start + record.length);
            continue;
        }
        const bool isArray = record.kind == Kind::array;
        appendMarker(out, isArray ? 0xa0 : 0xd0, isArray ? record.length : record.length / 2);
        for (std::uint32_t index = 0; index < record.length; ++index) {
            append(out, references_[record.start + index], referenceSize);
        }
    }
    const std::size_t table = out.size();
    const std::size_t offsetSize = bytesFor(table);
    for (const std::uint64_t offset : offsets) {
        append(out, offset, offsetSize);
    }
    out.resize(out.size() + 6, 0);
    out.push_back(static_cast<std::uint8_t>(offsetSize));
    out.push_back(static_cast<std::uint8_t>(referenceSize));
    append(out, records_.size(), 8);
    append(out, root, 8);
    append(out, table, 8);
    return out;
}

} // namespace vantor::archive
