#include "platform/uuid.h"

#include <cstring>
#include <random>

namespace vantor {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";

int digitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

bool isGroupEnd(std::size_t byteIndex) {
    return byteIndex == 4 || byteIndex == 6 || byteIndex == 8 || byteIndex == 10;
}

} // namespace

std::optional<UUID> UUID::parse(std::string_view text) {
    if (text.size() != 36) {
        return std::nullopt;
    }
    UUID id;
    std::size_t at = 0;
    for (std::size_t i = 0; i < id.bytes.size(); ++i) {
        if (isGroupEnd(i) && text[at++] != '-') {
            return std::nullopt;
        }
        const int high = digitValue(text[at]);
        const int low = digitValue(text[at + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        id.bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
        at += 2;
    }
    return id;
}

UUID UUID::random() {
    std::random_device source;
    UUID id;
    for (auto& byte : id.bytes) {
        byte = static_cast<std::uint8_t>(source());
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

std::string UUID::text() const {
    std::string out;
    out.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (isGroupEnd(i)) {
            out += '-';
        }
        out += kDigits[bytes[i] >> 4];
        out += kDigits[bytes[i] & 15];
    }
    return out;
}

} // namespace vantor

std::size_t std::hash<vantor::UUID>::operator()(const vantor::UUID& id) const noexcept {
    std::size_t words[2];
    static_assert(sizeof(words) == sizeof(id.bytes));
    std::memcpy(words, id.bytes.data(), sizeof(words));
    return words[0] ^ (words[1] * 0x9E3779B97F4A7C15ULL);
}
