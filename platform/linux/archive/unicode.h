#pragma once
// Conversions between UTF-8, as the project holds text, and UTF-16, as binary property lists do.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vantor::archive {

inline constexpr char32_t kReplacementCharacter = 0xfffd;

/// Values that are no character become U+FFFD.
void appendUTF8(std::string& out, char32_t character);

/// Takes the first character off `text`, which must not be empty. Malformed bytes (overlong forms
/// and surrogates included) are taken one at a time as U+FFFD, and `valid` becomes false.
char32_t takeCharacter(std::string_view& text, bool& valid);

bool isASCII(std::string_view text);

/// Big-endian code units; lone surrogates become U+FFFD. The length must be even.
std::string utf8FromUTF16(std::span<const std::uint8_t> bigEndian);

} // namespace vantor::archive
