#include "extension/number_text.h"

#include <charconv>
#include <cmath>
#include <string_view>

namespace vantor {

std::string decimalText(double value) {
    if (std::isnan(value)) {
        return "nan";
    }
    if (std::isinf(value)) {
        return value < 0 ? "-inf" : "inf";
    }
    // Every integer below 2^53 has its own double, so that its digits say nothing false.
    constexpr double kLargestPlain = 9007199254740992.0;
    constexpr double kSmallestPlain = 1e-4;
    const double magnitude = std::abs(value);
    const bool plain = value == 0 || (magnitude >= kSmallestPlain && magnitude <= kLargestPlain);
    char digits[64];
    const auto [end, failure] =
        std::to_chars(std::begin(digits), std::end(digits), value,
                      plain ? std::chars_format::fixed : std::chars_format::scientific);
    std::string text(digits, end);
    if (plain && text.find('.') == std::string::npos) {
        text += ".0";
    }
    return text;
}

} // namespace vantor
