#include "platform/linux/archive/binary_property_list_reader.h"

#include "platform/linux/archive/archive_error.h"
#include "platform/linux/archive/expansion_budget.h"
#include "platform/linux/archive/unicode.h"

#include <bit>
#include <optional>

namespace vantor::archive {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;

std::uint64_t bigEndian(std::span<const std::uint8_t> bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) {
        value = (value << 8) | byte;
    }
    return value;
}

class Reader {
  public:
    explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    Result<PropertyList> read() {
        PropertyList root;
        if (!readTrailer() || !budget_.take(1, 0) || !readObject(top_, 0, root)) {
            return Failure{cocoaError(kPropertyListReadCorrupt, "binary property list " + error_)};
        }
        return root;
    }

  private:
    bool fail(std::string why) {
        error_ = std::move(why);
        return false;
    }

    bool failAt(std::uint64_t object, const std::string& why) {
        return fail("object " + std::to_string(object) + ": " + why);
    }

    bool readTrailer() {
        if (bytes_.size() < kHeaderSize + kTrailerSize) {
            return fail("of " + std::to_string(bytes_.size()) + " bytes is too short");
        }
        const auto trailer = bytes_.last(kTrailerSize);
        offsetSize_ = trailer[6];
        referenceSize_ = trailer[7];
        count_ = bigEndian(trailer.subspan(8, 8));
        top_ = bigEndian(trailer.subspan(16, 8));
        const std::uint64_t table = bigEndian(trailer.subspan(24, 8));
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) {
            return fail("has offsets of " + std::to_string(offsetSize_) +
                        " bytes and references of " + std::to_string(referenceSize_) +
                        "; both must be 1 to 8");
        }
        if (count_ > kMaxObjects) {
            return fail("of " + std::to_string(count_) + " objects exceeds the limit of " +
                        std::to_string(kMaxObjects));
        }
        const std::size_t end = bytes_.size() - kTrailerSize;
        if (table < kHeaderSize || table > end || count_ * offsetSize_ > end - table) {
            return fail("has its offset table at byte " + std::to_string(table) +
                        ", outside the bytes that are there");
        }
        if (top_ >= count_) {
            return fail("names object " + std::to_string(top_) + " of " + std::to_string(count_) +
                        " as its root");
        }
        objectsEnd_ = static_cast<std::size_t>(table);
        onPath_.assign(static_cast<std::size_t>(count_), false);
        return true;
    }

    /// The bytes of the object table from the object's marker on; empty when it has none.
    std::span<const std::uint8_t> objectBytes(std::uint64_t object) const {
        const std::uint64_t offset = bigEndian(bytes_.subspan(
            objectsEnd_ + static_cast<std::size_t>(object) * offsetSize_, offsetSize_));
        if (offset < kHeaderSize || offset >= objectsEnd_) {
            return {};
        }
        return bytes_.subspan(static_cast<std::size_t>(offset),
                              objectsEnd_ - static_cast<std::size_t>(offset));
    }

    /// Takes the count that follows the marker `rest` begins with, and both off `rest`.
    static std::optional<std::uint64_t> takeCount(std::span<const std::uint8_t>& rest) {
        const std::uint8_t low = rest[0] & 0x0f;
        rest = rest.subspan(1);
        if (low != 0x0f) {
            return low;
        }
        if (rest.empty() || (rest[0] & 0xf0) != 0x10 || (rest[0] & 0x0f) > 3) {
            return std::nullopt;
        }
        const std::size_t size = std::size_t{1} << (rest[0] & 0x0f);
        if (rest.size() < 1 + size) {
            return std::nullopt;
        }
        const std::uint64_t count = bigEndian(rest.subspan(1, size));
        rest = rest.subspan(1 + size);
        return count;
    }

    /// The budget has paid for the value itself.
    bool readObject(std::uint64_t object, std::size_t depth, PropertyList& out) {
        if (object >= count_) {
            return fail("refers to object " + std::to_string(object) + " of " +
                        std::to_string(count_));
        }
        auto rest = objectBytes(object);
        if (rest.empty()) {
            return failAt(object, "its offset lies outside the object table");
        }
        switch (rest[0] >> 4) {
        case 0x0:
            return readSimple(object, rest[0], out);
        case 0x1:
            return readInteger(object, rest, out);
        case 0x2:
            return readReal(object, rest, out);
        case 0x3:
            if (rest[0] != 0x33 || rest.size() < 9) {
                return failAt(object, "malformed date");
            }
            out = PropertyList(
                PropertyList::Date{std::bit_cast<double>(bigEndian(rest.subspan(1, 8)))});
            return true;
        case 0x8:
            return readUID(object, rest, out);
        case 0x4:
            return readData(object, rest, out);
        case 0x5:
        case 0x6: {
            std::string text;
            const bool done = readText(object, rest, text);
            out = PropertyList(std::move(text));
            return done;
        }
        case 0xa:
        case 0xd:
            return readContainer(object, rest, depth, out);
        default:
            return failAt(object, "unknown kind " + std::to_string(rest[0]));
        }
    }

    bool readSimple(std::uint64_t object, std::uint8_t marker, PropertyList& out) {
        if (marker != 0x08 && marker != 0x09) {
            return failAt(object, "unknown kind " + std::to_string(marker));
        }
        out = PropertyList(marker == 0x09);
        return true;
    }

    bool readInteger(std::uint64_t object, std::span<const std::uint8_t> rest, PropertyList& out) {
        const unsigned power = rest[0] & 0x0f;
        const std::size_t size = std::size_t{1} << power;
        if (power > 4 || rest.size() < 1 + size) {
            return failAt(object, "malformed integer");
        }
        if (power < 4) {
            // Eight bytes are signed, fewer are not.
            out = PropertyList(static_cast<std::int64_t>(bigEndian(rest.subspan(1, size))));
            return true;
        }
        const std::uint64_t high = bigEndian(rest.subspan(1, 8));
        const std::uint64_t low = bigEndian(rest.subspan(9, 8));
        if (high == 0) {
            out = PropertyList(low);
        } else if (high == ~std::uint64_t{0} && (low >> 63) != 0) {
            out = PropertyList(static_cast<std::int64_t>(low));
        } else {
            return failAt(object, "integer beyond 64 bits");
        }
        return true;
    }

    bool readReal(std::uint64_t object, std::span<const std::uint8_t> rest, PropertyList& out) {
        if (rest[0] == 0x22 && rest.size() >= 5) {
            const auto bits = static_cast<std::uint32_t>(bigEndian(rest.subspan(1, 4)));
            out = PropertyList(static_cast<double>(std::bit_cast<float>(bits)));
            return true;
        }
        if (rest[0] == 0x23 && rest.size() >= 9) {
            out = PropertyList(std::bit_cast<double>(bigEndian(rest.subspan(1, 8))));
            return true;
        }
        return failAt(object, "malformed real");
    }

    bool readUID(std::uint64_t object, std::span<const std::uint8_t> rest, PropertyList& out) {
        const std::size_t size = std::size_t{rest[0] & 0x0fU} + 1;
        if (size > 8 || rest.size() < 1 + size) {
            return failAt(object, "malformed archive reference");
        }
        const std::uint64_t index = bigEndian(rest.subspan(1, size));
        if (index > UINT32_MAX) {
            return failAt(object, "archive reference beyond 32 bits");
        }
        out = PropertyList(PropertyList::UID{static_cast<std::uint32_t>(index)});
        return true;
    }

    /// Takes the marker and count off `rest` and leaves exactly the counted units.
    bool takeUnits(std::uint64_t object, std::span<const std::uint8_t>& rest, std::size_t unit) {
        const auto count = takeCount(rest);
        if (!count || *count > rest.size() / unit) {
            return failAt(object, "text or data longer than the bytes that are there");
        }
        rest = rest.first(static_cast<std::size_t>(*count) * unit);
        return budget_.take(0, rest.size()) || fail(ExpansionBudget::exceeded());
    }

    bool readData(std::uint64_t object, std::span<const std::uint8_t> rest, PropertyList& out) {
        if (!takeUnits(object, rest, 1)) {
            return false;
        }
        out = PropertyList(Bytes(rest.begin(), rest.end()));
        return true;
    }

    bool readText(std::uint64_t object, std::span<const std::uint8_t> rest, std::string& out) {
        const bool isUTF16 = (rest[0] >> 4) == 0x6;
        if (!takeUnits(object, rest, isUTF16 ? 2 : 1)) {
            return false;
        }
        if (isUTF16) {
            out = utf8FromUTF16(rest);
            return true;
        }
        out.assign(reinterpret_cast<const char*>(rest.data()), rest.size());
        return isASCII(out) || failAt(object, "ASCII text with other bytes");
    }

    bool readKey(std::uint64_t object, std::string& out) {
        const auto rest = object < count_ ? objectBytes(object) : std::span<const std::uint8_t>();
        if (rest.empty() || ((rest[0] >> 4) != 0x5 && (rest[0] >> 4) != 0x6)) {
            return failAt(object, "is a key and no text");
        }
        return readText(object, rest, out);
    }

    bool readContainer(std::uint64_t object, std::span<const std::uint8_t> rest, std::size_t depth,
                       PropertyList& out) {
        const bool isDictionary = (rest[0] >> 4) == 0xd;
        const std::size_t width = isDictionary ? 2 * referenceSize_ : referenceSize_;
        const auto count = takeCount(rest);
        if (!count || *count > rest.size() / width) {
            return failAt(object, "more elements than the bytes that are there");
        }
        if (onPath_[static_cast<std::size_t>(object)]) {
            return failAt(object, "contains itself");
        }
        if (depth >= kMaxDepth) {
            return failAt(object, "nests deeper than the limit of " + std::to_string(kMaxDepth));
        }
        const auto elements = static_cast<std::size_t>(*count);
        // Paid before any is made: containers within containers may share their bytes.
        if (!budget_.take(isDictionary ? 2 * elements : elements, 0)) {
            return fail(ExpansionBudget::exceeded());
        }
        onPath_[static_cast<std::size_t>(object)] = true;
        const bool done = isDictionary ? readDictionary(rest, elements, depth, out)
                                       : readArray(rest, elements, depth, out);
        onPath_[static_cast<std::size_t>(object)] = false;
        return done;
    }

    std::uint64_t reference(std::span<const std::uint8_t> references, std::size_t index) const {
        return bigEndian(references.subspan(index * referenceSize_, referenceSize_));
    }

    bool readArray(std::span<const std::uint8_t> references, std::size_t count, std::size_t depth,
                   PropertyList& out) {
        PropertyList::Array array(count, PropertyList(false));
        for (std::size_t index = 0; index < count; ++index) {
            if (!readObject(reference(references, index), depth + 1, array[index])) {
                return false;
            }
        }
        out = PropertyList(std::move(array));
        return true;
    }

    bool readDictionary(std::span<const std::uint8_t> references, std::size_t count,
                        std::size_t depth, PropertyList& out) {
        PropertyListDictionary dictionary;
        dictionary.reserve(count);
        for (std::size_t index = 0; index < count; ++index) {
            std::string key;
            if (!readKey(reference(references, index), key) ||
                !readObject(reference(references, count + index), depth + 1,
                            dictionary.append(std::move(key), PropertyList(false)))) {
                return false;
            }
        }
        out = PropertyList(std::move(dictionary));
        return true;
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t objectsEnd_ = 0;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t top_ = 0;
    /// The containers that are being read, to tell a cycle from mere depth.
    std::vector<bool> onPath_;
    ExpansionBudget budget_;
    std::string error_;
};

} // namespace

Result<PropertyList> readBinaryPropertyList(std::span<const std::uint8_t> bytes) {
    return Reader(bytes).read();
}

} // namespace vantor::archive
