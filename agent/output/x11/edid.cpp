#include "agent/output/x11/edid.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vantor::agent::x11 {
namespace {

constexpr std::size_t kSize = 128;
constexpr std::array<std::uint8_t, 8> kHeader{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
constexpr std::size_t kMaker = 8;
constexpr std::size_t kDescriptors = 54;
constexpr std::size_t kDescriptorSize = 18;
constexpr std::size_t kDescriptorCount = 4;
/// Where a descriptor that is no timing has its tag, and its text.
constexpr std::size_t kTag = 3;
constexpr std::size_t kText = 5;
constexpr std::uint8_t kNameTag = 0xFC;

/// Three letters of five bits each, "A" being 1.
std::string maker(std::uint16_t packed) {
    std::string letters;
    for (const int shift : {10, 5, 0}) {
        const int letter = packed >> shift & 0x1F;
        if (letter < 1 || letter > 26) {
            return {};
        }
        letters += static_cast<char>('A' + letter - 1);
    }
    return letters;
}

/// Ended by a line feed and padded with spaces; only the printable ones of ASCII.
std::string text(std::span<const std::uint8_t> bytes) {
    std::string result;
    for (const std::uint8_t byte : bytes) {
        if (byte == '\n') {
            break;
        }
        if (byte >= 0x20 && byte < 0x7F) {
            result += static_cast<char>(byte);
        }
    }
    result.erase(result.find_last_not_of(' ') + 1);
    return result;
}

} // namespace

DisplayName parseEDID(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kSize || !std::equal(kHeader.begin(), kHeader.end(), bytes.begin())) {
        return {};
    }
    DisplayName name{.make =
                         maker(static_cast<std::uint16_t>(bytes[kMaker] << 8 | bytes[kMaker + 1])),
                     .model = {}};
    for (std::size_t i = 0; i < kDescriptorCount; ++i) {
        const auto descriptor = bytes.subspan(kDescriptors + i * kDescriptorSize, kDescriptorSize);
        // A descriptor of a timing begins with its pixel clock.
        if (descriptor[0] == 0 && descriptor[1] == 0 && descriptor[kTag] == kNameTag) {
            name.model = text(descriptor.subspan(kText));
        }
    }
    return name;
}

} // namespace vantor::agent::x11
