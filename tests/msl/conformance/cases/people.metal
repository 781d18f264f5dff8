//! case OverloadsByAddressSpace
float get(constant float4& x) { return x.x + 10; } float get(thread float4& x) { return x.x + 20; }
//! body
float4 a = v.v1234; return float4(get(v.v1234), get(a), 0, 0);
//! gives 11 21 0 0
//! case OverloadsByCount
float f(float a) { return 1; } float f(float a, float b) { return 2; } float f(float2 a, float b) { return 3; } float f(float3 a) { return 4; }
//! body
return float4(f(v.one), f(v.one, 2), f(v.v12, 1), f(float3(1)));
//! gives 1 2 3 4
//! case HalfPrefersHalf
float f(half x) { return 1; } float f(float x) { return 2; } float g(half3 x) { return 3; } float g(float3 x) { return 4; }
//! body
return float4(f(half(v.one)), f(v.one), g(half3(1)), g(float3(1)));
//! gives 1 2 3 4
//! case HalfAndFloatMixFreely
//! body
half3 a = half3(v.v1234.xyz); float3 b = float3(a) + float3(a * half(2.0)); half c = a.x * 2.0h + half(v.two); float d = c * v.two; a *= 0.5; a += half3(b); return float4(b.z, c, d, a.y);
//! gives 9 4 8 7
//! case HalfLiterals
//! body
half a = 1.5h; half b = 0.5H; half4 c = half4(a, b, 2.h, .25h); float x = 1.f + 2.F + 0.f; return float4(c) + x;
//! gives 4.5 3.5 5 3.25
//! case SimdNames
#include <simd/simd.h>
using namespace simd;
struct U { vector_float2 a; matrix_float4x4 m; vector_uint4 b; simd_float3 c; simd_float2x2 d; };
//! body
U u; u.a = vector_float2{1, v.two}; u.m = matrix_float4x4(2.0); u.b = uint4(v.u5); u.c = simd_float3(4); u.d = simd_float2x2(v.one); return float4(u.a.y, u.m[1][1], u.b.w, u.c.z + u.d[0].x);
//! gives 2 2 5 5
//! case SharedHeaderSections
#ifndef SHARED_TYPES_H
#define SHARED_TYPES_H
#ifdef __METAL_VERSION__
#define NS_ENUM(_type, _name) enum _name : _type _name; enum _name : _type
#define NSInteger int
#else
#import <Foundation/Foundation.h>
#endif
#include <simd/simd.h>
typedef NS_ENUM(NSInteger, BufferIndex) { BufferIndexVertices = 0, BufferIndexUniforms = 1 };
typedef struct { vector_float3 position; matrix_float3x3 turn; float scale; } Shared;
#endif
//! parameters , constant Shared& s [[buffer(BufferIndexUniforms)]]
//! body
return float4(s.position.z, s.turn[1].y, s.scale, BufferIndexUniforms);
//! gives 2 9 16 1
//! case EnumOfTypeInMacro
#define NS_OPTIONS(_type, _name) enum _name : _type
typedef NS_OPTIONS(uint, Flags) { FlagA = 1 << 0, FlagB = 1 << 1 };
//! body
Flags f = FlagB; uint both = FlagA | FlagB; return float4(f, both, (both & FlagA) != 0, 0);
//! gives 2 3 1 0
//! case MacrosWithStringsAndPasting
#define CAT(a, b) a##b
#define CAT2(a, b) CAT(a, b)
#define LINE_NAME CAT2(var, __COUNTER__)
#define MAXOF(a, b) ((a) > (b) ? (a) : (b))
#define APPLY(m, ...) m(__VA_ARGS__)
#define EMPTY
#define STMT(x) do { x; } while (0)
//! body
float CAT(fo, o) = v.two; STMT(foo += 1); return float4(APPLY(MAXOF, foo, 2), CAT2(fo, o) EMPTY, MAXOF(v.i3, 7), 0);
//! gives 3 3 7 0
//! case ConditionalSections
#define LEVEL 2
#if LEVEL >= 3
#error too high
#elif defined(LEVEL) && (LEVEL == 2 || LEVEL == 1) && !defined(NOTHING)
#define PICK 5
#else
#define PICK 6
#endif
#if __has_include(<metal_stdlib>) && !__has_include("nothing_here.h")
#define HAS 1
#endif
#undef LEVEL
#ifdef LEVEL
#define PICK2 1
#else
#define PICK2 2
#endif
//! body
return float4(PICK, HAS, PICK2, __METAL_VERSION__ >= 200);
//! gives 5 1 2 1
//! case LibraryHeaders
#include <metal_math>
#include <metal_geometric>
#include <metal_texture>
#include <metal_matrix>
#include <metal_common>
#include <metal_graphics>
#include <metal_integer>
#include <metal_relational>
#include <metal_atomic>
#include <metal_pack>
#include <metal_types>
#import <simd/simd.h>
#pragma clang diagnostic ignored "-Wunused"
#pragma once
//! body
return float4(metal::sqrt(v.two * 2));
//! gives 2 2 2 2
//! case PiAndItsFriends
//! body
return float4(M_PI_F > 3.14 && M_PI_F < 3.15, M_SQRT2_F > 1.41, abs(M_PI_2_F * 2 - M_PI_F) < 1e-6, MAXFLOAT > 1e38 && INFINITY > MAXFLOAT);
//! gives 1 1 1 1
//! case InlineAndAttributes
static inline __attribute__((always_inline)) float a(float x) { return x; }
METAL_FUNC float b(float x) { return x * 2; }
[[clang::noinline]] inline float c(float x) { return x * 3; }
[[nodiscard]] constexpr float d(float x) { return x * 4; }
float e(float x [[maybe_unused]]) { return 5; }
//! body
return float4(a(v.one) + b(v.one), c(v.one), d(v.one), e(v.one));
//! gives 3 3 4 5
//! case NestedNamespaces
namespace a::b { constant float k = 1; float f() { return k; } struct S { float x; }; enum class E { one = 4 }; }
namespace a { namespace b { float g() { return f() + 1; } } using namespace b; float h() { return g() + f(); } }
namespace { float hidden() { return 7; } }
//! body
a::b::S s{v.two}; a::b::E e = a::b::E::one; return float4(a::h(), s.x, hidden(), int(e));
//! gives 3 2 7 4
//! case UsingDeclarations
namespace lib { float f(float x) { return x + 1; } struct P { float x; }; template <typename T> T id(T x) { return x; } }
using lib::f; using lib::P; using lib::id; using metal::max; typedef lib::P Q;
//! body
P p{v.two}; Q q = p; return float4(f(v.one), p.x, id(q.x), max(1.0f, v.two));
//! gives 2 2 2 2
//! case AutoAndDecltype
//! body
auto a = v.v12; auto b = 1; auto c = 2.5; auto d = a.x > 0; decltype(a) e = a * 2; const auto f = e.y; auto& g = e; g.x = 9; decltype(v.i3) h = 7 / 2; return float4(b + c + d, e.x, f, h);
//! gives 4.5 9 4 3
//! case ScalarsOfAllKinds
//! body
char a = -5; uchar b = 250; short c = -300; ushort d = 65535; int e = 1 << 20; uint f = 3000000000u; long g = 1L << 33; ulong h = 5ul; size_t i = 6; ptrdiff_t j = -7; int8_t k = -8; uint16_t l = 9; return float4(a + b, c + d, float(e) / float(f > 2999999999u), (g >> 31) + h + i + j + k + l);
//! gives 245 65235 1048576 9
//! case VectorsOfAllKinds
//! body
bool2 a = bool2(true, v.zero); char3 b = char3(1, -2, 3); ushort4 c = ushort4(65535, 2, 3, 4); long2 d = long2(5, 6); half2 e = half2(0.5, 1.5); c += ushort4(1); return float4(a.x + a.y, b.y * b.z, c.x + c.w, float(d.y) + e.y);
//! gives 1 -6 5 7.5
//! case PackedVectorsConvert
struct P { packed_float3 a; packed_half2 b; packed_int3 c; };
float3 twice(float3 x) { return x * 2; }
//! body
P p; p.a = float3(1, v.two, 3); p.b = packed_half2(4, 5); p.c = packed_int3(6); p.a.xy = float2(7, 8); p.a[2] += 1; float3 q = twice(p.a); packed_float4 r(q, 1); return float4(q.z, p.b.y, p.c.z, r.y + dot(float3(p.a), float3(1)));
//! gives 8 5 6 35
//! case MatrixForms
//! body
float2x3 a(float3(1, 2, 3), float3(4)); float3x3 b(1.0f); half2x2 c = half2x2(half2(1), half2(2, 3)); float4x4 d = float4x4(float4(1), float4(2), v.v1234, float4(4)); float2x2 e = {float2(1, 2), float2(3, 4)}; float2x2 f{e[0], e[1]}; return float4(a[1][2] + b[2][2], float(c[1].y), d[2].w, (e * f)[1].x);
//! gives 5 3 4 15
//! case MatrixArithmetic
//! body
float3x3 a = float3x3(2.0f) * v.two; float3x3 b = a - float3x3(1); float3 p = float3(1, 2, 3) * b; a += b; a *= 0.5f; float3x3 c = -a / 2; bool same = all(a[0] == a[0]); return float4(p.z, a[1][1], c[2][2], same);
//! gives 9 3.5 -1.75 1
//! case MatrixFunctions
//! body
float3x3 m = float3x3(float3(2, 0, 0), float3(0, 3, 0), float3(1, 0, v.i3 + 1)); half2x2 h = half2x2(1, 2, 3, 4); return float4(determinant(m), transpose(m)[0].z, float(determinant(h)), transpose(float2x4(float4(1), float4(2)))[3].y);
//! gives 24 1 -2 2
//! case TernariesOnStructsAndMixedTypes
struct P { float a; };
//! body
P x{1}, y{2}; P z = v.one > 0 ? y : x; float a = v.one > 2 ? 1 : 2.5; int b = v.i3 > 2 ? 'a' : 3; float2 c = v.one > 0 ? v.v12 : float2(0); return float4(z.a, a, b, c.y);
//! gives 2 2.5 97 2
//! case SwizzlesOfEverySort
//! body
float4 a = v.v1234; a.rgb = a.bgr; a.wx = float2(a.x, 9); float3 b = a.xxy + a.wzy.zyx; a.xy.x = 20; a.zw *= a.zw; return float4(b, a.x + a.w);
//! gives 11 10 5 29
//! case IndexingByRunTime
//! body
float4 a = v.v1234; int i = v.i3; uint j = v.u5 - 4u; a[j] = 10; a.zw[j] = 20; float3x3 m(1); m[j] = float3(4, 5, 6); m[i - 1][j] = 7; return float4(a[i], a[j], m[j][i - 1], m[2][1]);
//! gives 20 10 6 7
//! case LoopsWithTwoCounters
//! body
int s = 0; for (int i = 0, j = 10; i < j; ++i, --j) s += j - i; uint k = 3; while (k --> 0) s += 100; for (;;) { if (++s > 500) break; } return float4(s);
//! gives 501 501 501 501
//! case SwitchOnEnumsAndCharacters
enum class Op { add, mul, neg };
float run(Op op, float a, float b) { switch (op) { case Op::add: return a + b; case Op::mul: return a * b; default: return -a; } }
int letter(char c) { switch (c) { case 'a': case 'b': return 1; case '\n': return 2; } return 3; }
//! body
return float4(run(Op::add, v.two, 3), run(Op::mul, v.two, 3), run(Op::neg, v.two, 0), letter('b') * 100 + letter('\n') * 10 + letter('z'));
//! gives 5 6 -2 123
//! case AlternativeOperators
//! body
bool a = true and not (v.one > 2) or false; int b = (6 bitand 3) bitor 8; b xor_eq 1; b and_eq 15; return float4(a, b, compl 0, 1 not_eq 2);
//! gives 1 11 -1 1
//! case DigitSeparatorsAndBases
//! body
return float4(1'000, 0b1010, 0x1'0, 017) + float4(1e1f, .5, 2., 0x1p3);
//! gives 1010 10.5 18 23
//! case CommentsAndSplices
//! body
float a = v.one /* in /* the middle */ + 1; // the rest \
still a comment
a += 1; return float4(a);
//! gives 3 3 3 3
//! case AsTypeOfSmallTypes
//! body
half2 h = half2(1, 2); uint b = as_type<uint>(h); half2 back = as_type<half2>(b + 0u * v.u5); ushort s = as_type<ushort>(half(1.0)); uchar4 c = as_type<uchar4>(0x04030201u + 0u * v.u5); return float4(b == 0x40003C00u, back.y, s == 0x3C00, c.w);
//! gives 1 2 1 4
//! case AsTypeOfWholeVectors
//! body
uint4 a = as_type<uint4>(v.v1234); float2 b = as_type<float2>(ulong(0x40000000) << 32 | 0x3F800000ul); short4 c = as_type<short4>(uint2(0xFFFF0001u, 5)); char d = as_type<char>(uchar(255)); return float4(a.y == 0x40000000u, b.y, c.y, d);
//! gives 1 2 -1 -1
//! case PackAndUnpackHalf
//! body
half4 a = unpack_unorm4x8_to_half(0xFF0080FFu); uint b = pack_half_to_unorm4x8(half4(1, 0, 1, 0)); uint c = pack_float_to_unorm2x16(float2(1, 0)); half2 d = unpack_snorm2x16_to_half(0x80017FFFu); return float4(a.x, b == 0x00FF00FFu, c == 0xFFFFu, d.x + d.y);
//! gives 1 1 1 0
//! case LongProducts
//! body
ulong a = mulhi(0xFFFFFFFFFFFFFFFFul, ulong(v.u5)); long b = mulhi(-1L, long(v.i3)); uint c = mulhi(0xFFFFFFFFu, v.u5); ulong d = madhi(1ul << 63, 4ul, 5ul); return float4(a, b, c, d);
//! gives 4 -1 4 7
//! case IntegerLibrary
//! body
return float4(abs(-v.i3), min(v.i3, -2), clamp(v.i3, 4, 9), max3(1, v.i3, 2)) + float4(popcount(ushort(0xFF)), clz(ushort(1)), ctz(8u), reverse_bits(uchar(1)));
//! gives 11 13 7 131
//! case BitsOfVectors
//! body
int3 a = extract_bits(int3(0xF0, 0x70, -1) + v.i3 - 3, 4, 4); uint2 b = insert_bits(uint2(0), uint2(3), 4, 2); uint2 c = rotate(uint2(1), uint2(31, 4)); return float4(a.x, a.y, b.y, c.y);
//! gives -1 7 48 16
//! case RelationalLibrary
//! body
float4 a = v.v1234; return float4(any(a > 3) + all(a > 0), select(1.0, 2.0, v.one > 0), select(int2(1), int2(2), bool2(true, false)).y, isnormal(v.one) + signbit(-v.one));
//! gives 2 2 1 2
//! case GeometricLibrary
//! body
float3 a = float3(v.one, 2, 2); return float4(length(a), distance(a, float3(0)), dot(a, a), length_squared(a)) + float4(normalize(a).x * 3, distance_squared(a, float3(1)), cross(float3(1, 0, 0), float3(0, 1, 0)).z, fast::length(float2(3, 4)));
//! gives 4 5 10 14
//! case HalfLibrary
//! body
half x = half(v.two); half3 y = half3(1, 2, 2); return float4(sqrt(x * 2), max(x, 1.0h), length(y), dot(y, y)) + float4(clamp(x, 0.0h, 1.0h), mix(x, 4.0h, 0.5h), saturate(x), pow(x, 2.0h));
//! gives 3 5 4 13
//! case MathOfVectorsAndScalars
//! body
float3 a = clamp(float3(-1, 0.5, 2) * v.one, 0.0, 1.0); float3 b = mix(a, float3(2), 0.5); float2 c = max(v.v12, 1.5); float3 d = step(0.5, a); float2 e = pow(v.v12, 2.0); return float4(b.x, c.x, d.y + smoothstep(0.0, 1.0, a).z, e.y);
//! gives 1 1.5 2 4
//! case PowersAndRoots
//! body
return float4(powr(v.two, 3), cbrt(v.two * 4), hypot(v.one * 3, 4.0), exp10(v.two)) + float4(log10(v.one * 100), log2(v.two), rsqrt(v.two * 2), fmod(v.two * 3.5, 4));
//! refused there is no function named 'cbrt'
//! case RoundingFamily
//! body
float x = v.half_ + v.two; return float4(round(x), rint(x), trunc(-x), ceil(-x)) + float4(floor(-x), fract(x), sign(-x), fabs(-x));
//! gives 0 2.5 -3 0.5
//! case TrigonometryInPi
//! body
return float4(sinpi(v.half_), cospi(v.one), tanpi(v.zero), sincos(v.zero, *(thread float*)&v)) ;
//! refused 'constant const Values*' does not convert to 'thread float*'
//! case RecursionIsRefused
float f(int n) { return n <= 0 ? 0 : f(n - 1) + 1; }
//! body
return float4(f(v.i3));
//! refused the function 'f' calls itself, which shaders cannot do
//! case UndefinedFunctionsAreRefused
float f(float x);
//! body
return float4(f(v.one));
//! refused the function 'f' is declared and called but never defined
//! case DoublesAreRefused
//! body
double x = 1; return float4(x);
//! refused the language has no 'double'
//! case MemoryOfThreadgroupsIsRefused
//! body
threadgroup float x[4]; return 0;
//! refused threadgroup memory has no use in vertex and fragment functions
//! case PointerWalksAConstantTable
constant float kT[4] = {1, 2, 3, 4};
float sum(constant float* p, int n) { float s = 0; for (int i = 0; i < n; i++) s += p[i]; return s; }
//! body
return float4(sum(kT, v.i3), sum(kT + 1, 2), *(kT + 2), sum(&kT[2], 2));
//! gives 6 5 3 7
//! case CastsOfPointersToOtherTypes
//! parameters , constant float* data [[buffer(1)]], device uchar* bytes [[buffer(2)]]
//! body
constant float4* q = (constant float4*)data; constant uint* u = reinterpret_cast<constant uint*>(data + 1); device uint* w = (device uint*)(bytes + 4); return float4(q[1].z, u[0] == 0x3F800000u, w[0] == 0x07060504u, ((constant float*)&v.v1234)[v.i3]);
//! gives 6 1 1 4
//! case DiscardInHelpers
void cut(float x) { if (x > 1) discard_fragment(); }
//! body
cut(v.two); return float4(1);
//! gives -7 -7 -7 -7
//! case PrototypesOfMembersAndStructsAheadOfTheirUse
struct B; struct A { float x; float with(thread const B& b) const; }; struct B { float y; };
float A::with(thread const B& b) const { return x + b.y; }
//! body
A a{v.one}; B b{v.two}; return float4(a.with(b));
//! gives 3 3 3 3
//! case ConstantsInSwitchesAndTemplates
constant constexpr int kA = 1; static constant int kB = kA + 1; enum { kC = kB + 1 };
template <int N> int times(int x) { return x * N; }
//! body
switch (v.i3) { case kA: return 1; case kC: return float4(times<kB>(v.i3), times<kC>(2), 0, 0); } return 9;
//! gives 6 6 0 0
//! case HelpersOfKernelsAreLeftAlone
inline void reduce(threadgroup float* s, uint t) { threadgroup_barrier(mem_flags::mem_threadgroup); s[t] += s[t + 1]; }
kernel void k(threadgroup float* s [[threadgroup(0)]], uint t [[thread_index_in_threadgroup]]) { reduce(s, t); }
float inner(float x) { return x + 1; } float used(float x) { return inner(x) * 2; } struct S { float a; float f() const { return used(a); } };
//! body
S s{v.one}; return float4(used(v.two), s.f(), 0, 0);
//! gives 6 4 0 0
//! case ColumnsOfMatrices
//! body
float3x3 m(v.two); m.columns[1].z = 5; return float4(m.columns[0], m.columns[1][2]);
//! gives 2 0 0 5
//! case TypesOfExpressions
//! body
__typeof__(v.v12) a = v.v12 * 2; decltype(a.x) b = a.y; return float4(a, b, sizeof(__typeof__(a)));
//! gives 2 4 4 8
//! case EmptyInitialisers
//! body
float4x4 m = {}; float a[3] = {}; float3 b[] = {float3(1), {1, v.two, 3}}; int2 c{}; return float4(m[2][2] + a[1], b[1].y, sizeof(b) / sizeof(b[0]), c.x);
//! gives 0 2 2 0
//! case CallsAheadOfDefinitionsBesideKernels
float later(float x); float early(float x) { return later(x) + 1; } kernel void k(uint i [[thread_position_in_grid]]) {}
fragment float4 f_main(float4 p [[position]]) { return float4(early(p.x), later(2), 0, 0); }
float later(float x) { return x * 2; }
//! gives 2 4 0 0
