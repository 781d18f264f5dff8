#include "msl/library/prelude.h"

namespace msl {
namespace {

constexpr std::string_view kNames[] = {
    "conditional",
    "conditional_t",
    "decay",
    "decay_t",
    "enable_if",
    "enable_if_t",
    "false_type",
    "integral_constant",
    "is_arithmetic",
    "is_arithmetic_v",
    "is_floating_point",
    "is_floating_point_v",
    "is_integral",
    "is_integral_v",
    "is_matrix",
    "is_same",
    "is_same_v",
    "is_scalar",
    "is_signed",
    "is_signed_v",
    "is_unsigned",
    "is_unsigned_v",
    "is_vector",
    "is_vector_v",
    "madsat",
    "make_scalar",
    "make_scalar_t",
    "make_signed",
    "make_signed_t",
    "make_unsigned",
    "make_unsigned_t",
    "numeric_limits",
    "pack_float_to_srgb_unorm4x8",
    "pack_float_to_unorm10a2",
    "pack_float_to_unorm565",
    "pack_half_to_srgb_unorm4x8",
    "pack_half_to_unorm10a2",
    "pack_half_to_unorm565",
    "remove_const",
    "remove_const_t",
    "remove_cv",
    "remove_cv_t",
    "remove_reference",
    "remove_reference_t",
    "true_type",
    "unpack_unorm10a2_to_float",
    "unpack_unorm10a2_to_half",
    "unpack_unorm4x8_srgb_to_float",
    "unpack_unorm4x8_srgb_to_half",
    "unpack_unorm565_to_float",
    "unpack_unorm565_to_half",
};

// After the headers metal_type_traits and metal_limits of the published language.
constexpr std::string_view kText = R"msl(
namespace metal {
template <typename T, T v> struct integral_constant { static constexpr constant T value = v; typedef T value_type; };
typedef integral_constant<bool, true> true_type;
typedef integral_constant<bool, false> false_type;

#define TRAIT_OF(trait, type) template <> struct trait<type> { static constexpr constant bool value = true; };
#define TRAIT(trait) template <typename T> struct trait { static constexpr constant bool value = false; }; template <typename T> constexpr constant bool trait##_v = trait<T>::value;
TRAIT(is_floating_point)
TRAIT_OF(is_floating_point, float) TRAIT_OF(is_floating_point, half)
TRAIT(is_integral)
TRAIT_OF(is_integral, bool) TRAIT_OF(is_integral, char) TRAIT_OF(is_integral, uchar)
TRAIT_OF(is_integral, short) TRAIT_OF(is_integral, ushort) TRAIT_OF(is_integral, int)
TRAIT_OF(is_integral, uint) TRAIT_OF(is_integral, long) TRAIT_OF(is_integral, ulong)
TRAIT(is_signed)
TRAIT_OF(is_signed, float) TRAIT_OF(is_signed, half) TRAIT_OF(is_signed, char)
TRAIT_OF(is_signed, short) TRAIT_OF(is_signed, int) TRAIT_OF(is_signed, long)
TRAIT(is_unsigned)
TRAIT_OF(is_unsigned, bool) TRAIT_OF(is_unsigned, uchar) TRAIT_OF(is_unsigned, ushort)
TRAIT_OF(is_unsigned, uint) TRAIT_OF(is_unsigned, ulong)
template <typename T> struct is_arithmetic { static constexpr constant bool value = is_floating_point<T>::value || is_integral<T>::value; };
template <typename T> constexpr constant bool is_arithmetic_v = is_arithmetic<T>::value;
template <typename T> struct is_scalar { static constexpr constant bool value = is_arithmetic<T>::value; };
template <typename T> struct is_vector { static constexpr constant bool value = false; };
template <typename T, int N> struct is_vector<vec<T, N>> { static constexpr constant bool value = true; };
template <typename T> constexpr constant bool is_vector_v = is_vector<T>::value;
template <typename T> struct is_matrix { static constexpr constant bool value = false; };
template <typename T, int C, int R> struct is_matrix<matrix<T, C, R>> { static constexpr constant bool value = true; };
template <typename T, typename U> struct is_same { static constexpr constant bool value = false; };
template <typename T> struct is_same<T, T> { static constexpr constant bool value = true; };
template <typename T, typename U> constexpr constant bool is_same_v = is_same<T, U>::value;

template <bool C, typename T = void> struct enable_if {};
template <typename T> struct enable_if<true, T> { typedef T type; };
template <bool C, typename T = void> using enable_if_t = typename enable_if<C, T>::type;
template <bool C, typename T, typename U> struct conditional { typedef U type; };
template <typename T, typename U> struct conditional<true, T, U> { typedef T type; };
template <bool C, typename T, typename U> using conditional_t = typename conditional<C, T, U>::type;

template <typename T> struct remove_cv { typedef T type; };
template <typename T> using remove_cv_t = T;
template <typename T> struct remove_const { typedef T type; };
template <typename T> using remove_const_t = T;
template <typename T> struct remove_reference { typedef T type; };
template <typename T> using remove_reference_t = T;
template <typename T> struct decay { typedef T type; };
template <typename T> using decay_t = T;

template <typename T> struct make_scalar { typedef T type; };
template <typename T, int N> struct make_scalar<vec<T, N>> { typedef T type; };
template <typename T> using make_scalar_t = typename make_scalar<T>::type;
template <typename T> struct make_unsigned { typedef T type; };
template <> struct make_unsigned<char> { typedef uchar type; };
template <> struct make_unsigned<short> { typedef ushort type; };
template <> struct make_unsigned<int> { typedef uint type; };
template <> struct make_unsigned<long> { typedef ulong type; };
template <typename T, int N> struct make_unsigned<vec<T, N>> { typedef vec<typename make_unsigned<T>::type, N> type; };
template <typename T> using make_unsigned_t = typename make_unsigned<T>::type;
template <typename T> struct make_signed { typedef T type; };
template <> struct make_signed<uchar> { typedef char type; };
template <> struct make_signed<ushort> { typedef short type; };
template <> struct make_signed<uint> { typedef int type; };
template <> struct make_signed<ulong> { typedef long type; };
template <typename T, int N> struct make_signed<vec<T, N>> { typedef vec<typename make_signed<T>::type, N> type; };
template <typename T> using make_signed_t = typename make_signed<T>::type;

template <typename T> struct numeric_limits { static constexpr constant bool is_specialized = false; };
#define LIMITS_OF(type, low, high) template <> struct numeric_limits<type> { static constexpr constant bool is_specialized = true; static constexpr constant bool is_integer = true; static type min() { return type(low); } static type max() { return type(high); } static type lowest() { return type(low); } };
LIMITS_OF(char, -128, 127)
LIMITS_OF(uchar, 0, 255)
LIMITS_OF(short, -32768, 32767)
LIMITS_OF(ushort, 0, 65535)
LIMITS_OF(int, -2147483647 - 1, 2147483647)
LIMITS_OF(uint, 0, 4294967295u)
LIMITS_OF(long, -9223372036854775807 - 1, 9223372036854775807)
LIMITS_OF(ulong, 0, 18446744073709551615u)

template <> struct numeric_limits<float> {
    static constexpr constant bool is_specialized = true;
    static constexpr constant bool is_integer = false;
    static float min() { return 1.17549435e-38f; }
    static float max() { return 3.40282347e+38f; }
    static float lowest() { return -3.40282347e+38f; }
    static float epsilon() { return 1.1920929e-7f; }
    static float infinity() { return INFINITY; }
    static float quiet_NaN() { return NAN; }
};
template <> struct numeric_limits<half> {
    static constexpr constant bool is_specialized = true;
    static constexpr constant bool is_integer = false;
    static half min() { return half(6.103515625e-5f); }
    static half max() { return half(65504.0f); }
    static half lowest() { return half(-65504.0f); }
    static half epsilon() { return half(9.765625e-4f); }
    static half infinity() { return half(INFINITY); }
    static half quiet_NaN() { return half(NAN); }
};
#undef TRAIT
#undef TRAIT_OF
#undef LIMITS_OF

inline int madsat(int a, int b, int c) {
    int high = mulhi(a, b);
    uint low = uint(a * b);
    uint sum = low + uint(c);
    high += (c >> 31) + (sum < low ? 1 : 0);
    return high == (int(sum) >> 31) ? int(sum) : high < 0 ? -2147483647 - 1 : 2147483647;
}
inline uint madsat(uint a, uint b, uint c) {
    uint low = a * b;
    uint sum = low + c;
    return mulhi(a, b) + (sum < low ? 1u : 0u) != 0 ? 4294967295u : sum;
}
#define MADSAT_OF(type, low, high) inline type madsat(type a, type b, type c) { return type(clamp(int(a) * int(b) + int(c), low, high)); }
MADSAT_OF(char, -128, 127)
MADSAT_OF(uchar, 0, 255)
MADSAT_OF(short, -32768, 32767)
#undef MADSAT_OF
inline ushort madsat(ushort a, ushort b, ushort c) { return ushort(min(uint(a) * uint(b) + uint(c), 65535u)); }

// The first component lies in the lowest bits.
inline uint pack_float_to_unorm10a2(float4 x) {
    uint4 n = uint4(rint(saturate(x) * float4(1023, 1023, 1023, 3)));
    return n.x | n.y << 10 | n.z << 20 | n.w << 30;
}
inline float4 unpack_unorm10a2_to_float(uint x) {
    return float4(uint4(x, x >> 10, x >> 20, x >> 30) & uint4(1023, 1023, 1023, 3)) / float4(1023, 1023, 1023, 3);
}
inline ushort pack_float_to_unorm565(float3 x) {
    uint3 n = uint3(rint(saturate(x) * float3(31, 63, 31)));
    return ushort(n.x | n.y << 5 | n.z << 11);
}
inline float3 unpack_unorm565_to_float(ushort x) {
    return float3(uint3(x, x >> 5, x >> 11) & uint3(31, 63, 31)) / float3(31, 63, 31);
}
// The curve of IEC 61966-2-1.
inline uint pack_float_to_srgb_unorm4x8(float4 x) {
    float3 c = saturate(x.rgb);
    c = select(1.055f * powr(c, float3(1.0f / 2.4f)) - 0.055f, c * 12.92f, c <= 0.0031308f);
    return pack_float_to_unorm4x8(float4(c, x.a));
}
inline float4 unpack_unorm4x8_srgb_to_float(uint x) {
    float4 c = unpack_unorm4x8_to_float(x);
    float3 linear = select(powr((c.rgb + 0.055f) / 1.055f, float3(2.4f)), c.rgb / 12.92f, c.rgb <= 0.04045f);
    return float4(linear, c.a);
}
inline uint pack_half_to_unorm10a2(half4 x) { return pack_float_to_unorm10a2(float4(x)); }
inline half4 unpack_unorm10a2_to_half(uint x) { return half4(unpack_unorm10a2_to_float(x)); }
inline ushort pack_half_to_unorm565(half3 x) { return pack_float_to_unorm565(float3(x)); }
inline half3 unpack_unorm565_to_half(ushort x) { return half3(unpack_unorm565_to_float(x)); }
inline uint pack_half_to_srgb_unorm4x8(half4 x) { return pack_float_to_srgb_unorm4x8(float4(x)); }
inline half4 unpack_unorm4x8_srgb_to_half(uint x) { return half4(unpack_unorm4x8_srgb_to_float(x)); }
}
)msl";

} // namespace

std::span<const std::string_view> preludeNames() { return kNames; }

std::string_view preludeText() { return kText; }

} // namespace msl
