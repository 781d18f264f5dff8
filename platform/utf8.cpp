#include "platform/utf8.h"

#include <cstddef>
#include <cstdint>

namespace vantor {

bool isUTF8(std::string_view text) {
    const auto byte = [text](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
    std::size_t index = 0;
    while (index < text.size()) {
        const std::uint8_t lead = byte(index);
        std::size_t length = 1;
        std::uint8_t lowest = 0x80;
        std::uint8_t highest = 0xbf;
        if (lead >= 0xc2 && lead <= 0xdf) {
            length = 2;
        } else if (lead >= 0xe0 && lead <= 0xef) {
            length = 3;
            lowest = lead == 0xe0 ? 0xa0 : lowest;
            highest = lead == 0xed ? 0x9f : highest;
        } else if (lead >= 0xf0 && lead <= 0xf4) {
            length = 4;
            lowest = lead == 0xf0 ? 0x90 : lowest;
            highest = lead == 0xf4 ? 0x8f : highest;
        } else if (lead >= 0x80) {
            return false;
        }
        if (text.size() - index < length) {
            return false;
        }
        for (std::size_t next = 1; next < length; ++next) {
            if (byte(index + next) < lowest || byte(index + next) > highest) {
                return false;
            }
            lowest = 0x80;
            highest = 0xbf;
        }
        index += length;
    }
    return true;
}

} // namespace vantor
