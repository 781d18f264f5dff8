#include "msl/preprocessor/macro.h"

#include <array>

namespace msl {
namespace {

// The Metal Shading Language specification, chapters 1.5.2, 1.5.4 and 6.6.
constexpr PredefinedMacro kMacros[] = {
    {"__METAL_VERSION__", "300"},
    {"__METAL__", "1"},
    {"__METAL_MACOS__", "1"},
    {"__cplusplus", "201402L"},
    {"__LINE__", "", Macro::Kind::line},
    {"__FILE__", "", Macro::Kind::file},
    {"__COUNTER__", "", Macro::Kind::counter},
    {"_Pragma", "", Macro::Kind::function},
    {"__typeof__", "decltype"},
    {"METAL_FUNC", "inline"},
    {"METAL_INTERNAL", "inline"},
    {"CHAR_BIT", "8"},
    {"SCHAR_MAX", "127"},
    {"SCHAR_MIN", "(-128)"},
    {"UCHAR_MAX", "255"},
    {"CHAR_MAX", "127"},
    {"CHAR_MIN", "(-128)"},
    {"USHRT_MAX", "65535"},
    {"SHRT_MAX", "32767"},
    {"SHRT_MIN", "(-32768)"},
    {"UINT_MAX", "4294967295u"},
    {"INT_MAX", "2147483647"},
    {"INT_MIN", "(-2147483647-1)"},
    {"ULONG_MAX", "18446744073709551615ul"},
    {"LONG_MAX", "9223372036854775807l"},
    {"LONG_MIN", "(-9223372036854775807l-1)"},
    {"FLT_DIG", "6"},
    {"FLT_MANT_DIG", "24"},
    {"FLT_MAX_10_EXP", "38"},
    {"FLT_MAX_EXP", "128"},
    {"FLT_MIN_10_EXP", "(-37)"},
    {"FLT_MIN_EXP", "(-125)"},
    {"FLT_RADIX", "2"},
    {"FLT_MAX", "0x1.fffffep127f"},
    {"FLT_MIN", "0x1.0p-126f"},
    {"FLT_EPSILON", "0x1.0p-23f"},
    {"HALF_MAX", "0x1.ffcp15h"},
    {"HALF_MIN", "0x1.0p-14h"},
    {"HALF_EPSILON", "0x1.0p-10h"},
    {"MAXFLOAT", "0x1.fffffep127f"},
    {"MAXHALF", "0x1.ffcp15h"},
    {"HUGE_VALF", "__builtin_inff"},
    {"HUGE_VALH", "__builtin_inff"},
    {"INFINITY", "__builtin_inff"},
    {"NAN", "__builtin_nanf"},
    {"M_E_F", "2.71828182845904523536028747135266250f"},
    {"M_LOG2E_F", "1.44269504088896340735992468100189214f"},
    {"M_LOG10E_F", "0.434294481903251827651128918916605082f"},
    {"M_LN2_F", "0.693147180559945309417232121458176568f"},
    {"M_LN10_F", "2.30258509299404568401799145468436421f"},
    {"M_PI_F", "3.14159265358979323846264338327950288f"},
    {"M_PI_2_F", "1.57079632679489661923132169163975144f"},
    {"M_PI_4_F", "0.785398163397448309615660845819875721f"},
    {"M_1_PI_F", "0.318309886183790671537767526745028724f"},
    {"M_2_PI_F", "0.636619772367581343075535053490057448f"},
    {"M_2_SQRTPI_F", "1.12837916709551257389615890312154517f"},
    {"M_SQRT2_F", "1.41421356237309504880168872420969808f"},
    {"M_SQRT1_2_F", "0.707106781186547524400844362104849039f"},
    {"M_E_H", "2.71828182845904523536028747135266250h"},
    {"M_LOG2E_H", "1.44269504088896340735992468100189214h"},
    {"M_LOG10E_H", "0.434294481903251827651128918916605082h"},
    {"M_LN2_H", "0.693147180559945309417232121458176568h"},
    {"M_LN10_H", "2.30258509299404568401799145468436421h"},
    {"M_PI_H", "3.14159265358979323846264338327950288h"},
    {"M_PI_2_H", "1.57079632679489661923132169163975144h"},
    {"M_PI_4_H", "0.785398163397448309615660845819875721h"},
    {"M_1_PI_H", "0.318309886183790671537767526745028724h"},
    {"M_2_PI_H", "0.636619772367581343075535053490057448h"},
    {"M_2_SQRTPI_H", "1.12837916709551257389615890312154517h"},
    {"M_SQRT2_H", "1.41421356237309504880168872420969808h"},
    {"M_SQRT1_2_H", "0.707106781186547524400844362104849039h"},
};

constexpr size_t kSlots = 256;

constexpr auto kTable = [] {
    std::array<uint8_t, kSlots> table{}; // index into kMacros plus one
    for (size_t i = 0; i < std::size(kMacros); ++i) {
        size_t slot = nameHash(kMacros[i].name) % kSlots;
        while (table[slot] != 0) {
            slot = (slot + 1) % kSlots;
        }
        table[slot] = static_cast<uint8_t>(i + 1);
    }
    return table;
}();

} // namespace

const PredefinedMacro* findPredefinedMacro(std::string_view name, uint32_t hash) {
    for (size_t slot = hash % kSlots; kTable[slot] != 0; slot = (slot + 1) % kSlots) {
        const auto& candidate = kMacros[kTable[slot] - 1];
        if (candidate.name == name) {
            return &candidate;
        }
    }
    return nullptr;
}

} // namespace msl
