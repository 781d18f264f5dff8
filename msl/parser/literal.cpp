#include <charconv>
#include <cmath>

#include "msl/parser/parser.h"

namespace msl {

bool parseNumber(std::string_view text, ast::Expr& literal, std::string& problem) {
    const std::string_view whole = text;
    std::string joined;
    const auto bad = [&] {
        problem = "'" + std::string(whole.substr(0, 60)) + "' is not a number";
        return false;
    };
    if (text.find('\'') != std::string_view::npos) {
        joined = text;
        std::erase(joined, '\'');
        text = joined;
    }
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text.remove_prefix(2);
    } else if (text.size() > 2 && text[0] == '0' && (text[1] == 'b' || text[1] == 'B')) {
        base = 2;
        text.remove_prefix(2);
    }
    const bool isFloat = base == 16   ? text.find_first_of(".pP") != std::string_view::npos
                         : base == 10 ? text.find_first_of(".eE") != std::string_view::npos ||
                                            (text.back() == 'f' || text.back() == 'F' ||
                                             text.back() == 'h' || text.back() == 'H')
                                      : false;
    if (isFloat) {
        literal.kind = ast::ExprKind::floatLiteral;
        literal.literalType = floatType();
        const char last = text.back();
        if (last == 'f' || last == 'F') {
            text.remove_suffix(1);
        } else if (last == 'h' || last == 'H') {
            literal.literalType = scalarType(TypeKind::halfType);
            text.remove_suffix(1);
        }
        if (text.empty() || (base == 16 && text.find_first_of("pP") == std::string_view::npos)) {
            return bad();
        }
        const auto end = text.data() + text.size();
        double value = 0;
        auto parsed =
            std::from_chars(text.data(), end, value,
                            base == 16 ? std::chars_format::hex : std::chars_format::general);
        if (parsed.ec == std::errc::result_out_of_range) {
            // Too large becomes infinity, too small zero: the exponent's sign tells which.
            const auto exponent = text.find_first_of(base == 16 ? "pP" : "eE");
            const bool tiny = exponent != std::string_view::npos && exponent + 1 < text.size() &&
                              text[exponent + 1] == '-';
            value = tiny ? 0.0 : HUGE_VAL;
        } else if (parsed.ec != std::errc()) {
            return bad();
        }
        if (parsed.ptr != end) {
            return bad();
        }
        literal.floatValue = value;
        return true;
    }
    bool isUnsigned = false;
    bool isLong = false;
    while (!text.empty()) {
        const char last = text.back();
        if (last == 'u' || last == 'U') {
            isUnsigned = true;
        } else if (last == 'l' || last == 'L') {
            isLong = true;
        } else {
            break;
        }
        text.remove_suffix(1);
    }
    if (text.find('\'') != std::string_view::npos || text.empty()) {
        return bad();
    }
    if (base == 10 && text.size() > 1 && text[0] == '0') {
        base = 8;
    }
    uint64_t value = 0;
    const auto end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, value, base);
    if (parsed.ec == std::errc::result_out_of_range) {
        problem = "the number '" + std::string(whole.substr(0, 60)) + "' does not fit in 64 bits";
        return false;
    }
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        return bad();
    }
    literal.kind = ast::ExprKind::intLiteral;
    literal.intValue = value;
    TypeKind kind = TypeKind::intType;
    if (isLong || value > UINT32_MAX || (base == 10 && !isUnsigned && value > INT32_MAX)) {
        kind = isUnsigned || value > INT64_MAX ? TypeKind::ulongType : TypeKind::longType;
    } else if (isUnsigned || value > INT32_MAX) {
        kind = TypeKind::uintType;
    }
    literal.literalType = scalarType(kind);
    return true;
}

} // namespace msl
