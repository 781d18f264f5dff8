#include "platform/linux/archive/unicode.h"

#include <algorithm>

namespace vantor::archive {

void appendUTF8(std::string& out, char32_t character) {
    if (character > 0x10ffff || (character >= 0xd800 && character <= 0xdfff)) {
        character = kReplacementCharacter;
    }
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xc0 | (character >> 6));
        put(0x80 | (character & 0x3f));
    } else if (character < 0x10000) {
        put(0xe0 | (character >> 12));
        put(0x80 | ((character >> 6) & 0x3f));
        put(0x80 | (character & 0x3f));
    } else {
        put(0xf0 | (character >> 18));
        put(0x80 | ((character >> 12) & 0x3f));
        put(0x80 | ((character >> 6) & 0x3f));
        put(0x80 | (character & 0x3f));
    }
}

char32_t takeCharacter(std::string_view& text, bool& valid) {
    const auto byte = [&text](std::size_t index) { return static_cast<std::uint8_t>(text[index]); };
    const std::uint8_t lead = byte(0);
    std::size_t length = 1;
    char32_t character = lead;
    char32_t smallest = 0;
    if (lead >= 0xf0 && lead < 0xf8) {
        length = 4;
        character = lead & 0x07U;
        smallest = 0x10000;
    } else if (lead >= 0xe0 && lead < 0xf0) {
        length = 3;
        character = lead & 0x0fU;
        smallest = 0x800;
    } else if (lead >= 0xc0 && lead < 0xe0) {
        length = 2;
        character = lead & 0x1fU;
        smallest = 0x80;
    }
    bool wellFormed = (lead < 0x80 || length > 1) && text.size() >= length;
    for (std::size_t index = 1; wellFormed && index < length; ++index) {
        wellFormed = (byte(index) & 0xc0U) == 0x80;
        character = (character << 6) | (byte(index) & 0x3fU);
    }
    wellFormed = wellFormed && character >= smallest && character <= 0x10ffff &&
                 (character < 0xd800 || character > 0xdfff);
    if (!wellFormed) {
        valid = false;
        text.remove_prefix(1);
        return kReplacementCharacter;
    }
    text.remove_prefix(length);
    return character;
}

bool isASCII(std::string_view text) {
    std::uint8_t seen = 0;
    for (const char byte : text) {
        seen |= static_cast<std::uint8_t>(byte);
    }
    return seen < 0x80;
}

std::string utf8FromUTF16(std::span<const std::uint8_t> bigEndian) {
    const std::size_t units = bigEndian.size() / 2;
    const auto unit = [bigEndian](std::size_t index) {
        return static_cast<char32_t>((bigEndian[2 * index] << 8) | bigEndian[2 * index + 1]);
    };
    std::string out;
    out.reserve(bigEndian.size());
    for (std::size_t index = 0; index < units; ++index) {
        char32_t character = unit(index);
        if (character >= 0xd800 && character < 0xdc00 && index + 1 < units) {
            const char32_t low = unit(index + 1);
            if (low >= 0xdc00 && low < 0xe000) {
                character = 0x10000 + ((character - 0xd800) << 10) + (low - 0xdc00);
                ++index;
            }
        }
        appendUTF8(out, character);
    }
    return out;
}

} // namespace vantor::archive
