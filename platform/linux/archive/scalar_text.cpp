#include "platform/linux/archive/scalar_text.h"

#include <charconv>
#include <chrono>
#include <limits>

namespace vantor::archive {
namespace {

bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

template <typename Number, typename... Form>
std::optional<Number> whole(std::string_view text, Form... form) {
    Number value{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, form...);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

int base64Digit(char character) {
    if (character >= 'A' && character <= 'Z') {
        return character - 'A';
    }
    if (character >= 'a' && character <= 'z') {
        return character - 'a' + 26;
    }
    if (character >= '0' && character <= '9') {
        return character - '0' + 52;
    }
    return character == '+' ? 62 : character == '/' ? 63 : -1;
}

} // namespace

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<PropertyList> parseInteger(std::string_view text) {
    text = trimmed(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    const auto magnitude = whole<std::uint64_t>(text, base);
    if (!magnitude) {
        return std::nullopt;
    }
    if (!negative) {
        return PropertyList(*magnitude);
    }
    constexpr auto kLargestMagnitude = std::uint64_t{1} << 63;
    if (*magnitude > kLargestMagnitude) {
        return std::nullopt;
    }
    return PropertyList(static_cast<std::int64_t>(0 - *magnitude));
}

std::optional<PropertyList> parseReal(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    if (text == "infinity" || text == "-infinity") {
        text.remove_suffix(5);
    }
    const auto value = whole<double>(text);
    return value ? std::optional(PropertyList(*value)) : std::nullopt;
}

std::optional<PropertyList> parseDate(std::string_view text) {
    text = trimmed(text);
    if (text.size() != 20 || text[4] != '-' || text[7] != '-' || text[10] != 'T' ||
        text[13] != ':' || text[16] != ':' || text[19] != 'Z') {
        return std::nullopt;
    }
    const auto number = [text](std::size_t at, std::size_t length) {
        return whole<unsigned>(text.substr(at, length));
    };
    const auto year = number(0, 4);
    const auto month = number(5, 2);
    const auto day = number(8, 2);
    const auto hour = number(11, 2);
    const auto minute = number(14, 2);
    const auto second = number(17, 2);
    if (!year || !month || !day || !hour || !minute || !second || *hour > 23 || *minute > 59 ||
        *second > 59) {
        return std::nullopt;
    }
    using namespace std::chrono;
    const year_month_day date{std::chrono::year(static_cast<int>(*year)),
                              std::chrono::month(*month), std::chrono::day(*day)};
    if (!date.ok()) {
        return std::nullopt;
    }
    const auto since = sys_days(date) - sys_days(std::chrono::year(2001) / 1 / 1) + hours(*hour) +
                       minutes(*minute) + seconds(*second);
    return PropertyList(PropertyList::Date{static_cast<double>(seconds(since).count())});
}

std::optional<PropertyList> parseBase64(std::string_view text) {
    Bytes out;
    out.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    int digits = 0;
    int padding = 0;
    for (const char character : text) {
        if (isBlank(character)) {
            continue;
        }
        if (character == '=') {
            ++padding;
        } else if (const int digit = base64Digit(character); digit >= 0 && padding == 0) {
            bits = (bits << 6) | static_cast<std::uint32_t>(digit);
            if (++digits % 4 == 0) {
                out.push_back(static_cast<std::uint8_t>(bits >> 16));
                out.push_back(static_cast<std::uint8_t>(bits >> 8));
                out.push_back(static_cast<std::uint8_t>(bits));
                digits = 0;
            }
        } else {
            return std::nullopt;
        }
    }
    const int expectedPadding = digits == 0 ? 0 : 4 - digits;
    if (digits == 1 || padding != expectedPadding) {
        return std::nullopt;
    }
    if (digits == 2) {
        out.push_back(static_cast<std::uint8_t>(bits >> 4));
    } else if (digits == 3) {
        out.push_back(static_cast<std::uint8_t>(bits >> 10));
        out.push_back(static_cast<std::uint8_t>(bits >> 2));
    }
    return PropertyList(std::move(out));
}

} // namespace vantor::archive
