#include "platform/linux/archive/binary_objects.h"

#include "platform/linux/archive/unicode.h"

#include <bit>
#include <cstring>

namespace vantor::archive {
namespace {

constexpr std::size_t kHeaderSize = 8;

// The upper half of an object's first byte.
constexpr unsigned kSimple = 0x0;
constexpr unsigned kInteger = 0x1;
constexpr unsigned kReal = 0x2;
constexpr unsigned kDate = 0x3;
constexpr unsigned kData = 0x4;
constexpr unsigned kASCII = 0x5;
constexpr unsigned kUTF16 = 0x6;
constexpr unsigned kUID = 0x8;
constexpr unsigned kArray = 0xa;
constexpr unsigned kDictionary = 0xd;

unsigned kindOf(std::span<const std::uint8_t> object) { return object[0] >> 4; }

BinaryObjects::Reading malformed(std::string& why, std::string what) {
    why = std::move(what);
    return BinaryObjects::Reading::malformed;
}

} // namespace

Result<BinaryObjects, std::string> BinaryObjects::open(std::span<const std::uint8_t> bytes) {
    BinaryObjects objects(bytes);
    if (auto flaw = objects.readTrailer()) {
        return Failure{*std::move(flaw)};
    }
    return objects;
}

std::optional<std::string> BinaryObjects::readTrailer() {
    if (bytes_.size() < kHeaderSize + kTrailerSize) {
        return "of " + std::to_string(bytes_.size()) + " bytes is too short";
    }
    const auto trailer = bytes_.last(kTrailerSize);
    offsetSize_ = trailer[6];
    referenceSize_ = trailer[7];
    count_ = bigEndian(trailer.subspan(8, 8));
    top_ = bigEndian(trailer.subspan(16, 8));
    const std::uint64_t table = bigEndian(trailer.subspan(24, 8));
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) {
        return "has offsets of " + std::to_string(offsetSize_) + " bytes and references of " +
               std::to_string(referenceSize_) + "; both must be 1 to 8";
    }
    if (count_ > kMaxObjects) {
        return "of " + std::to_string(count_) + " objects exceeds the limit of " +
               std::to_string(kMaxObjects);
    }
    const std::size_t end = bytes_.size() - kTrailerSize;
    if (table < kHeaderSize || table > end || count_ * offsetSize_ > end - table) {
        return "has its offset table at byte " + std::to_string(table) +
               ", outside the bytes that are there";
    }
    if (top_ >= count_) {
        return "names object " + std::to_string(top_) + " of " + std::to_string(count_) +
               " as its root";
    }
    objectsEnd_ = static_cast<std::size_t>(table);
    return std::nullopt;
}

/// From the object's first byte to the end of all; empty when the object is not there.
BinaryObjects::Bytes BinaryObjects::objectBytes(Reference object) const {
    if (object >= count_) {
        return {};
    }
    const std::uint64_t offset = bigEndian(
        bytes_.subspan(objectsEnd_ + static_cast<std::size_t>(object) * offsetSize_, offsetSize_));
    if (offset < kHeaderSize || offset >= objectsEnd_) {
        return {};
    }
    return bytes_.subspan(static_cast<std::size_t>(offset),
                          objectsEnd_ - static_cast<std::size_t>(offset));
}

/// Takes the count that follows the marker `rest` begins with, and both off `rest`.
std::optional<std::uint64_t> BinaryObjects::takeCount(Bytes& rest) {
    const std::uint8_t low = rest[0] & 0x0f;
    rest = rest.subspan(1);
    if (low != 0x0f) {
        return low;
    }
    if (rest.empty() || kindOf(rest) != kInteger || (rest[0] & 0x0f) > 3) {
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

bool BinaryObjects::isContainer(Reference object) const {
    const Bytes bytes = objectBytes(object);
    return !bytes.empty() && (kindOf(bytes) == kArray || kindOf(bytes) == kDictionary);
}

std::optional<BinaryObjects::Container> BinaryObjects::container(Reference object) const {
    if (!isContainer(object)) {
        return std::nullopt;
    }
    Bytes rest = objectBytes(object);
    const bool isDictionary = kindOf(rest) == kDictionary;
    const std::size_t width = isDictionary ? 2 * referenceSize_ : referenceSize_;
    const auto count = takeCount(rest);
    if (!count || *count > rest.size() / width) {
        return std::nullopt;
    }
    const auto elements = static_cast<std::size_t>(*count);
    return Container{.isDictionary = isDictionary,
                     .count = elements,
                     .references = rest.first(elements * width)};
}

std::optional<BinaryObjects::Reference> BinaryObjects::find(const Container& dictionary,
                                                            std::string_view key) const {
    if (dictionary.isDictionary) {
        for (std::size_t index = 0; index < dictionary.count; ++index) {
            if (isText(element(dictionary, index), key)) {
                return element(dictionary, dictionary.count + index);
            }
        }
    }
    return std::nullopt;
}

std::optional<std::uint32_t> BinaryObjects::uid(Reference object) const {
    const Bytes bytes = objectBytes(object);
    PropertyList value;
    std::string ignored;
    if (bytes.empty() || kindOf(bytes) != kUID || !readUID(bytes, value, ignored)) {
        return std::nullopt;
    }
    return value.uid()->index;
}

bool BinaryObjects::isText(Reference object, std::string_view text) const {
    Bytes rest = objectBytes(object);
    if (rest.empty() || (kindOf(rest) != kASCII && kindOf(rest) != kUTF16)) {
        return false;
    }
    const std::size_t unit = kindOf(rest) == kUTF16 ? 2 : 1;
    const auto count = takeCount(rest);
    if (!count || *count != text.size() || text.size() > rest.size() / unit) {
        return false;
    }
    return unit == 1 ? std::memcmp(rest.data(), text.data(), text.size()) == 0
                     : utf8FromUTF16(rest.first(2 * text.size())) == text;
}

bool BinaryObjects::readInteger(Bytes rest, PropertyList& out, std::string& why) {
    const unsigned power = rest[0] & 0x0f;
    const std::size_t size = std::size_t{1} << power;
    if (power > 4 || rest.size() < 1 + size) {
        why = "malformed integer";
        return false;
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
        why = "integer beyond 64 bits";
        return false;
    }
    return true;
}

bool BinaryObjects::readReal(Bytes rest, PropertyList& out, std::string& why) {
    if (rest[0] == 0x22 && rest.size() >= 5) {
        const auto bits = static_cast<std::uint32_t>(bigEndian(rest.subspan(1, 4)));
        out = PropertyList(static_cast<double>(std::bit_cast<float>(bits)));
        return true;
    }
    if (rest[0] == 0x23 && rest.size() >= 9) {
        out = PropertyList(std::bit_cast<double>(bigEndian(rest.subspan(1, 8))));
        return true;
    }
    why = "malformed real";
    return false;
}

bool BinaryObjects::readUID(Bytes rest, PropertyList& out, std::string& why) {
    const std::size_t size = std::size_t{rest[0] & 0x0fU} + 1;
    if (size > 8 || rest.size() < 1 + size) {
        why = "malformed archive reference";
        return false;
    }
    const std::uint64_t index = bigEndian(rest.subspan(1, size));
    if (index > UINT32_MAX) {
        why = "archive reference beyond 32 bits";
        return false;
    }
    out = PropertyList(PropertyList::UID{static_cast<std::uint32_t>(index)});
    return true;
}

/// Takes the marker and count off `rest` and leaves exactly the counted units.
BinaryObjects::Reading BinaryObjects::takeUnits(Bytes& rest, std::size_t unit,
                                                ExpansionBudget& budget, std::string& why) {
    const auto count = takeCount(rest);
    if (!count || *count > rest.size() / unit) {
        return malformed(why, "text or data longer than the bytes that are there");
    }
    rest = rest.first(static_cast<std::size_t>(*count) * unit);
    return budget.take(0, rest.size()) ? Reading::done : Reading::exceeded;
}

BinaryObjects::Reading BinaryObjects::readTextBytes(Bytes rest, ExpansionBudget& budget,
                                                    std::string& out, std::string& why) {
    const bool isUTF16 = kindOf(rest) == kUTF16;
    const Reading taken = takeUnits(rest, isUTF16 ? 2 : 1, budget, why);
    if (taken != Reading::done) {
        return taken;
    }
    if (isUTF16) {
        out = utf8FromUTF16(rest);
        return Reading::done;
    }
    out.assign(reinterpret_cast<const char*>(rest.data()), rest.size());
    return isASCII(out) ? Reading::done : malformed(why, "ASCII text with other bytes");
}

BinaryObjects::Reading BinaryObjects::readText(Reference object, ExpansionBudget& budget,
                                               std::string& out, std::string& why) const {
    const Bytes rest = objectBytes(object);
    if (rest.empty() || (kindOf(rest) != kASCII && kindOf(rest) != kUTF16)) {
        return malformed(why, "is a key and no text");
    }
    return readTextBytes(rest, budget, out, why);
}

BinaryObjects::Reading BinaryObjects::readLeaf(Reference object, ExpansionBudget& budget,
                                               PropertyList& out, std::string& why) const {
    Bytes rest = objectBytes(object);
    if (rest.empty()) {
        return malformed(why, object < count_ ? "its offset lies outside the object table"
                                              : "is not among the " + std::to_string(count_));
    }
    const auto outcome = [](bool done) { return done ? Reading::done : Reading::malformed; };
    switch (kindOf(rest)) {
    case kSimple:
        if (rest[0] == 0x08 || rest[0] == 0x09) {
            out = PropertyList(rest[0] == 0x09);
            return Reading::done;
        }
        break;
    case kInteger:
        return outcome(readInteger(rest, out, why));
    case kReal:
        return outcome(readReal(rest, out, why));
    case kDate:
        if (rest[0] != 0x33 || rest.size() < 9) {
            return malformed(why, "malformed date");
        }
        out =
            PropertyList(PropertyList::Date{std::bit_cast<double>(bigEndian(rest.subspan(1, 8)))});
        return Reading::done;
    case kUID:
        return outcome(readUID(rest, out, why));
    case kData: {
        const Reading taken = takeUnits(rest, 1, budget, why);
        if (taken == Reading::done) {
            out = PropertyList(vantor::Bytes(rest.begin(), rest.end()));
        }
        return taken;
    }
    case kASCII:
    case kUTF16: {
        std::string text;
        const Reading read = readTextBytes(rest, budget, text, why);
        out = PropertyList(std::move(text));
        return read;
    }
    default:
        break;
    }
    return malformed(why, "unknown kind " + std::to_string(rest[0]));
}

} // namespace vantor::archive
