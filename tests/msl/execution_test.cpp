// Small shaders, each drawn on the machine's Vulkan device; the pixel must hold the value that the
// language's rules give.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "tests/msl/compile_helper.h"
#include "tests/support/vulkan_runner.h"

namespace msl::tests {
namespace {

struct Case {
    const char* name;
    const char* body;
    std::array<float, 4> expected;
    const char* globals = "";
};

void PrintTo(const Case& item, std::ostream* stream) { *stream << item.name; }

// The buffer `v` that every case may read.
struct Values {
    float zero = 0;
    float one = 1;
    float two = 2;
    float half = 0.5F;
    int32_t three = 3;
    uint32_t five = 5;
    float v12[2] = {1, 2};
    float v1234[4] = {1, 2, 3, 4};
};

const Case kCases[] = {
    // Expressions
    {"FloatArithmetic",
     "return float4(v.one + v.two, v.one - v.two, v.two * 3, v.one / v.two);",
     {3, -1, 6, 0.5F}},
    {"IntegerDivisionTruncates",
     "int a = -v.i3; return float4(a / 2, a % 2, 7 / v.i3, 7 % v.i3);",
     {-1, -1, 2, 1}},
    {"UnsignedWrapsAround",
     "uint a = v.u5 - 6u; return float4(a == 0xFFFFFFFFu, a >> 28, 0, 0);",
     {1, 15, 0, 0}},
    {"BitOperations", "int a = v.i3; return float4(a & 6, a | 4, a ^ 1, ~a);", {2, 7, 2, -4}},
    {"ShiftsFollowTheSign",
     "int a = -8 * v.i3; uint b = v.u5; return float4(a >> 2, b >> 1, "
     "b << 3, uint(a) >> 31);",
     {-6, 2, 40, 1}},
    {"ShiftCountIsTakenModuloWidth",
     "return float4(v.u5 << (32u + uint(v.one)), 0, 0, 0);",
     {10, 0, 0, 0}},
    {"MixedSignComparesUnsigned",
     "return float4(-v.i3 < v.u5, -v.i3 < int(v.u5), 0, 0);",
     {0, 1, 0, 0}},
    {"ComparisonGivesBool",
     "return float4(v.one < v.two, v.one > v.two, v.one == 1, v.one != 1);",
     {1, 0, 1, 0}},
    {"VectorComparisonIsByComponent",
     "float4 r = select(float4(0), float4(1), v.v1234 > 2.5); "
     "return r;",
     {0, 0, 1, 1}},
    {"TernaryEvaluatesOneSide",
     "int n = 0; int r = v.one > 0 ? (n += 1, 7) : (n += 10, 8); "
     "return float4(r, n, 0, 0);",
     {7, 1, 0, 0}},
    {"TernaryOnVectorsIsByComponent",
     "return v.v1234 > 2.0 ? v.v1234 : float4(-1);",
     {-1, -1, 3, 4}},
    {"AndStopsAtFalse",
     "int n = 0; bool b = v.zero > 1 && (n++ == 0); return float4(b, n, 0, 0);",
     {0, 0, 0, 0}},
    {"OrStopsAtTrue",
     "int n = 0; bool b = v.one > 0 || (n++ == 0); return float4(b, n, 0, 0);",
     {1, 0, 0, 0}},
    {"CommaGivesTheLast", "int a = (v.i3, 9); return float4(a);", {9, 9, 9, 9}},
    {"PrefixAndPostfix",
     "int a = v.i3; int b = a++; int c = ++a; int d = a--; "
     "return float4(a, b, c, d);",
     {4, 3, 5, 5}},
    {"CompoundAssignments",
     "float a = v.two; a += 3; a *= 2; a -= 1; a /= 3; "
     "int b = v.i3; b <<= 2; b |= 1; b %= 8; return float4(a, b, 0, 0);",
     {3, 5, 0, 0}},
    {"CompoundAssignmentConvertsBack",
     "int a = v.i3; a *= 1.5; char c = 127; c += v.i3; "
     "return float4(a, c, 0, 0);",
     {4, -126, 0, 0}},
    {"AssignmentIsAnExpression",
     "float a, b; a = b = v.two; return float4(a, b, (a = 5), a);",
     {2, 2, 5, 5}},
    {"UnaryMinusAndNot", "return float4(-v.two, !bool(v.one), !v.zero, -v.v12.y);", {-2, 0, 1, -2}},
    {"AsTypeKeepsBits",
     "return float4(as_type<uint>(v.one) == 0x3F800000u, "
     "as_type<float>(0x40000000 + 0 * v.i3), 0, 0);",
     {1, 2, 0, 0}},
    {"CastsTruncate",
     "return float4(int(-2.7 * v.one), (int)2.7, static_cast<uint>(v.two), "
     "(float)v.i3);",
     {-2, 2, 2, 3}},
    {"SmallIntegersWrap",
     "uchar a = 250 + v.u5 + 3; short b = short(32767 + v.i3); "
     "return float4(a, b, 0, 0);",
     {2, -32766, 0, 0}},
    {"SmallIntegersPromoteToInt",
     "uchar a = 200, b = 100; return float4(a + b, uchar(a + b), 0, "
     "v.zero);",
     {300, 44, 0, 0}},
    {"LongsHold64Bits",
     "long a = long(v.i3) << 40; return float4(a >> 40, a > 0x7FFFFFFF, "
     "int(a), sizeof(long));",
     {3, 1, 0, 8}},
    {"LiteralsOfAllForms",
     "return float4(0x1F, 1e2, 010, 0b101) + float4(1.5f, 0.5h, 2u, 1.f);",
     {32.5F, 100.5F, 10, 6}},
    {"SizeofFollowsTheLayout",
     "return float4(sizeof(float3), sizeof(packed_float3), "
     "sizeof(half2), sizeof(float3x3));",
     {16, 12, 4, 48}},
    {"BoolConvertsToNumbers",
     "bool b = v.one > 0; return float4(b + b, b ? 2 : 3, float(b), !b);",
     {2, 2, 1, 0}},
    // Vectors
    {"SwizzleReads", "return float4(v.v1234.wzyx);", {4, 3, 2, 1}},
    {"SwizzleRepeats", "return v.v1234.xxyy;", {1, 1, 2, 2}},
    {"SwizzleOfSwizzle",
     "return float4(v.v1234.wzyx.xy, v.v1234.zw.y, v.v1234.rgb.b);",
     {4, 3, 4, 3}},
    {"SwizzleWrites", "float4 a = v.v1234; a.yx = a.xy; a.w = 9; return a;", {2, 1, 3, 9}},
    {"SwizzleCompoundWrites",
     "float4 a = v.v1234; a.xz *= 10; a.yw += float2(1, 2); return a;",
     {10, 3, 30, 6}},
    {"ComponentByRunTimeIndex",
     "float4 a = v.v1234; int i = v.i3; a[i] = 7; return float4(a[i], "
     "a[i - 1], a[0], v.v1234[i]);",
     {7, 3, 1, 4}},
    {"VectorConstructorsMix", "return float4(v.v12, float2(v.two, 5));", {1, 2, 2, 5}},
    {"VectorSplat", "float3 a = v.two; float3 b(3); return float4(a + b, 1);", {5, 5, 5, 1}},
    {"IntegerVectors",
     "int3 a = int3(v.i3); a.y <<= 1; a %= 4; return float4(float3(a), 0);",
     {3, 2, 3, 0}},
    {"VectorTimesScalarBothWays", "return float4(2 * v.v12, v.v12 * 0.5);", {2, 4, 0.5F, 1}},
    {"BoolVectors",
     "bool2 b = v.v12 > 1.5; return float4(any(b), all(b), b.x, b.y);",
     {1, 0, 0, 1}},
    {"VectorEqualityNeedsAll",
     "return float4(all(v.v12 == float2(1, 2)), all(v.v12 == 1), 0, 0);",
     {1, 0, 0, 0}},
    {"HalfMixesWithFloat",
     "half4 h = half4(v.v1234); h.x += 0.5h; float4 f = float4(h) * 2; "
     "return f;",
     {3, 4, 6, 8}},
    {"PackedVectorsCompute",
     "packed_float3 p = packed_float3(1, 2, 3); p.y = v.two * 4; float3 q "
     "= p * 2; return float4(q, p.z);",
     {2, 16, 6, 3}},
    // Matrices
    {"MatrixTimesVector",
     "float2x2 m = float2x2(1, 2, 3, 4); return float4(m * v.v12, v.v12 * m);",
     {7, 10, 5, 11}},
    {"MatrixTimesMatrix",
     "float2x2 a = float2x2(1, 2, 3, 4) * v.one; float2x2 b = "
     "float2x2(float2(0, 1), float2(1, 0)); a = a * b; return float4(a[0], "
     "a[1]);",
     {3, 4, 1, 2}},
    {"MatrixDiagonal",
     "float3x3 m = float3x3(v.two); return float4(m * float3(1, 2, 3), m[0][1]);",
     {2, 4, 6, 0}},
    {"MatrixColumnsAreWritten",
     "float2x2 m(v.one); m[1] = float2(5, 6); m[0].y = 7; "
     "return float4(m[0], m[1]);",
     {1, 7, 5, 6}},
    {"MatrixByRunTimeIndex",
     "float3x3 m = float3x3(1, 2, 3, 4, 5, 6, 7, 8, 9); int i = v.i3 - 1; "
     "m[i][i - 1] = 20; return float4(m[i], m[i - 1][i]);",
     {7, 20, 9, 6}},
    {"MatrixSumAndScale",
     "float2x2 a(1, 2, 3, 4), b(v.one); float2x2 c = (a + b - a * 0.5) * 2; "
     "return float4(c[0], c[1]);",
     {3, 2, 3, 6}},
    {"TransposeAndDeterminant",
     "float2x3 m = float2x3(float3(1, 2, 3), float3(4, 5, 6) * v.one); "
     "float3x2 t = transpose(m); return float4(t[0], t[2].x, "
     "determinant(float2x2(v.one, 2, 3, 4)));",
     {1, 4, 3, -2}},
    {"MatrixCompoundMultiply",
     "float2x2 m(v.one); m *= 3; float2 p = v.v12; p *= "
     "0.5; return float4(m[0].x, m[1].y, p);",
     {3, 3, 0.5F, 1}},
    // Arrays
    {"ArrayByRunTimeIndex",
     "float a[4] = {1, 2, 3, 4}; a[v.i3] = 8; return float4(a[v.i3], "
     "a[v.i3 - 1], a[0], a[1]);",
     {8, 3, 1, 2}},
    {"ArrayRestIsZero",
     "float a[4] = {v.one}; return float4(a[0], a[1], a[2], a[3]);",
     {1, 0, 0, 0}},
    {"ArrayOfArrays",
     "int a[2][3] = {{1, 2, 3}, {4, 5, 6}}; int i = v.i3 - 2; "
     "return float4(a[i][i + 1], a[0][2], a[i][0], a[1][1]);",
     {6, 3, 4, 5}},
    {"ArrayBracesMayBeLeftOut",
     "int a[2][2] = {1, 2, 3, v.i3 + 1}; return float4(a[0][0], "
     "a[0][1], a[1][0], a[1][1]);",
     {1, 2, 3, 4}},
    {"ArrayLengthFromInitialiser",
     "float a[] = {5, 6, v.two}; return float4(sizeof(a) / "
     "sizeof(a[0]), a[2], 0, 0);",
     {3, 2, 0, 0}},
    {"ProgramScopeArray",
     "return float4(kTable[v.i3], kTable[1], kPair[v.i3 - 2].y, kScale);",
     {40, 20, 4, 2.5F},
     "constant float kTable[4] = {10, 20, 30, 40};\n"
     "constant float2 kPair[2] = {float2(1, 2), float2(3, 4)};\n"
     "constant float kScale = 5.0 / 2.0;"},
    {"ArraysCopyAsValues",
     "struct S { float a[3]; }; S s; s.a[0] = v.one; s.a[1] = 2; s.a[2] = 3; "
     "S t = s; t.a[1] = 9; return float4(s.a[1], t.a[1], t.a[2], 0);",
     {2, 9, 3, 0}},
    {"RangeForWalksArrays",
     "float a[3] = {1, 2, v.two}; float s = 0; for (float x : a) s += x; "
     "for (thread auto& x : a) x *= 2; return float4(s, a[0], a[2], 0);",
     {5, 2, 4, 0}},
    {"WildIndexIsHeldInside",
     "float a[4] = {1, 2, 3, 4}; int i = v.i3 * 1000; a[i] = 9; "
     "return float4(a[0], a[1], a[2], 0);",
     {1, 2, 3, 0}},
    // Structs
    {"StructsNest",
     "Outer o = {{v.one, v.two}, 3}; o.inner.y += 10; return float4(o.inner.x, "
     "o.inner.y, o.z, 0);",
     {1, 12, 3, 0},
     "struct Inner { float x, y; }; struct Outer { Inner inner; float z; };"},
    {"StructDesignatedInitialiser",
     "P p = {.b = v.two, .c = 3}; return float4(p.a, p.b, p.c, 0);",
     {0, 2, 3, 0},
     "struct P { float a; float b; float c; };"},
    {"StructDefaultMembers",
     "P p; P q{7}; return float4(p.a, p.b, q.a, q.b + v.zero);",
     {4, 5, 7, 5},
     "struct P { float a = 4; float b = 5; };"},
    {"StructMemberFunctions",
     "C c{v.two}; c.grow(3); return float4(c.twice(), c.r, 0, 0);",
     {10, 5, 0, 0},
     "struct C { float r; float twice() const { return r * 2; } void grow(float by) { r += by; } "
     "};"},
    {"StructConstructors",
     "Ray r(v.two, 3); return float4(r.a, r.b, 0, 0);",
     {2, 6, 0, 0},
     "struct Ray { float a, b; Ray(float x, float y) : a(x) { b = y * x; } };"},
    {"StructOperators",
     "V a{v.one}, b{2}; V c = a + b; return float4(c.x, (a * 3.0f).x, 0, 0);",
     {3, 3, 0, 0},
     "struct V { float x; V operator*(float s) const { return V{x * s}; } };\n"
     "V operator+(V a, V b) { return V{a.x + b.x}; }"},
    {"TypedefStruct",
     "T t; t.x = v.two; return float4(t.x);",
     {2, 2, 2, 2},
     "typedef struct { float x; } T;"},
    {"Enums",
     "Mode m = v.i3 == 3 ? second : first; return float4(m, Kind::b == Kind::b, "
     "int(Kind::b), third);",
     {1, 1, 5, 10},
     "enum Mode { first, second, third = 10 }; enum class Kind { a = 4, b };"},
    {"AutoAndUsing",
     "auto x = v.v12 * 2; using F = float; F y = x.y; return float4(x, y, 0);",
     {2, 4, 4, 0}},
    // Functions
    {"OverloadsByType",
     "return float4(f(v.one), f(v.i3), f(v.v12), f(v.u5));",
     {1, 2, 3, 4},
     "float f(float) { return 1; } float f(int) { return 2; } float f(float2) { return 3; } "
     "float f(uint) { return 4; }"},
    {"ReferenceParameters",
     "float a = v.one; float b = v.two; swapThem(a, b); "
     "return float4(a, b, 0, 0);",
     {2, 1, 0, 0},
     "void swapThem(thread float& a, thread float& b) { float t = a; a = b; b = t; }"},
    {"ReferenceToComponent",
     "float3 p = float3(v.one); bump(p.y); float a[2] = {1, 2}; "
     "bump(a[v.i3 - 2]); return float4(p, a[1]);",
     {1, 11, 1, 12},
     "void bump(thread float& x) { x += 10; }"},
    {"PointerParameters",
     "float x = v.two; scale(&x, 4); float a[3] = {1, 2, 3}; "
     "return float4(x, sum(a, v.i3), 0, 0);",
     {8, 6, 0, 0},
     "void scale(thread float* p, float s) { *p *= s; }\n"
     "float sum(thread const float* p, int n) { float s = 0; for (int i = 0; i < n; i++) s += "
     "p[i]; return s; }"},
    {"ReferenceWrittenInLoop",
     "float s = v.zero; for (int i = 0; i < 4; ++i) add(s, i); "
     "return float4(s);",
     {6, 6, 6, 6},
     "void add(thread float& s, int i) { s += i; }"},
    {"DefaultArguments",
     "return float4(f(v.one), f(v.one, 5), 0, 0);",
     {4, 6, 0, 0},
     "float f(float a, float b = 3) { return a + b; }"},
    {"PrototypeBeforeDefinition",
     "return float4(later(v.two));",
     {4, 4, 4, 4},
     "float later(float x);\nfloat caller(float x) { return later(x); }\n"
     "float later(float x) { return x * x; }"},
    {"Templates",
     "return float4(twice(v.two), twice(v.i3), pick<2>(v.v1234), biggest<float>(1, "
     "v.two));",
     {4, 6, 3, 2},
     "template <typename T> T twice(T x) { return x + x; }\n"
     "template <int N> float pick(float4 v) { return v[N]; }\n"
     "template <typename T> T biggest(T a, T b) { return a > b ? a : b; }"},
    {"Namespaces",
     "return float4(tools::inner::f(v.one), tools::k, metal::max(v.one, v.two), 0);",
     {11, 3, 2, 0},
     "namespace tools { constant float k = 3; namespace inner { float f(float x) { return x + 7 + "
     "k; } } }"},
    {"EarlyReturns",
     "return float4(grade(-1), grade(v.half_), grade(v.two), grade(20));",
     {0, 1, 2, 3},
     "float grade(float x) { if (x < 0) return 0; if (x < 1) { return 1; } else if (x < 10) return "
     "2; return 3; }"},
    {"ReturnInsideLoops",
     "return float4(find(v.i3), find(v.i3 + 40), 0, 0);",
     {13, -1, 0, 0},
     "float find(int n) { for (int i = 0; i < 4; i++) for (int j = 0; j < 4; j++) if (i * j == n) "
     "return i * 10 + j; return -1; }"},
    {"ReturnInsideNestedIfs",
     "return float4(f(1, 1), f(1, -v.one), f(-1, 1), 0);",
     {2, 12, 20, 0},
     "float f(float a, float b) { float r = 0; if (a > 0) { if (b > 0) return 2; r = 2; } else { r "
     "= 10; } r += 10; return r; }"},
    {"ReturnInsideSwitch",
     "return float4(f(0), f(1), f(v.i3), 0);",
     {5, 7, 9, 0},
     "float f(int i) { switch (i) { case 0: return 5; case 1: { return 7; } default: break; } "
     "return 9; }"},
    // Statements
    {"ForLoopSums",
     "float s = 0; for (int i = 0; i < v.i3; ++i) { s += i; } return float4(s);",
     {3, 3, 3, 3}},
    {"FloatLoopCounter",
     "int n = 0; for (float t = 0; t < v.two; t += 0.5) n++; return float4(n);",
     {4, 4, 4, 4}},
    {"WhileWithBreakAndContinue",
     "int i = 0, s = 0; while (true) { i++; if (i > 10) break; if (i "
     "% 2 == 0) continue; s += i; } return float4(s, i, v.zero, 0);",
     {25, 11, 0, 0}},
    {"DoLoopRunsOnce",
     "int n = 0; do { n++; } while (n < -v.i3); int m = 0; do { if (++m == 2) "
     "continue; } while (m < 5); return float4(n, m, 0, 0);",
     {1, 5, 0, 0}},
    {"NestedLoopsBreakInner",
     "int n = 0; for (int i = 0; i < 3; i++) { for (int j = 0; j < 9; j++) "
     "{ if (j == v.i3) break; n++; } } return float4(n);",
     {9, 9, 9, 9}},
    {"SwitchFallsThrough",
     "int r = 0; switch (v.i3) { case 1: r += 1; case 3: r += 3; case 4: r "
     "+= 4; break; case 5: r += 5; } return float4(r);",
     {7, 7, 7, 7}},
    {"SwitchDefaultAndSharedLabels",
     "int r = 0; for (int i = 0; i < 4; i++) switch (i) { case 0: "
     "case 1: r += 1; break; default: r += 10; } return float4(r, "
     "v.zero, 0, 0);",
     {22, 0, 0, 0}},
    {"ContinueInsideSwitchInLoop",
     "int r = 0; for (int i = 0; i < 4; i++) { switch (i) { case 1: "
     "continue; case 2: break; } r += i; } return float4(r, v.zero, "
     "0, 0);",
     {5, 0, 0, 0}},
    {"ShadowingEndsWithItsBlock",
     "float a = v.one; { float a = 5; a += 1; } for (int a = 0; a < 2; "
     "a++) {} return float4(a);",
     {1, 1, 1, 1}},
    {"VariablesOfBothBranchesMeet",
     "float a; float b = 1; if (v.one > 0) { a = 2; b = 3; } else { "
     "a = 4; } return float4(a, b, 0, 0);",
     {2, 3, 0, 0}},
    {"IfWithDeclaration",
     "if (int i = v.i3) { return float4(i); } return float4(0);",
     {3, 3, 3, 3}},
    {"DiscardLeavesTheTarget",
     "if (v.one > 0) discard_fragment(); return float4(1);",
     {-7, -7, -7, -7}},
    {"LoopInsideInlinedCallInLoop",
     "float s = 0; for (int i = 0; i < 3; i++) s += pw(v.two, i); "
     "return float4(s);",
     {7, 7, 7, 7},
     "float pw(float x, int n) { float r = 1; for (int i = 0; i < n; i++) r *= x; return r; }"},
    // Preprocessor
    {"MacrosExpand",
     "return float4(SQUARE(v.two + 1), JOIN(v.t, wo), COUNT, PI_IS);",
     {9, 2, 3, 3},
     "#define SQUARE(x) ((x) * (x))\n#define JOIN(a, b) a##b\n#define COUNT 3\n"
     "#if defined(COUNT) && COUNT > 2\n#define PI_IS int(M_PI_F)\n#else\n#error no\n#endif"},
    {"VariadicMacros",
     "return float4(CALL(max, v.one, v.two), PICK(1, 2, 3), 0, 0);",
     {2, 2, 0, 0},
     "#define CALL(f, ...) f(__VA_ARGS__)\n#define PICK(a, b, ...) b"},
    {"SplicedLines",
     "float a = v.o\\\nne; return float4(a + MANY);",
     {3, 3, 3, 3},
     "#define MANY 1 + \\\n 1"},
    // Library
    {"MinMaxClamp",
     "return float4(min(v.one, v.two), max(v.i3, 7), clamp(v.two, 0.0, 1.5), "
     "saturate(-v.one));",
     {1, 7, 1.5F, 0}},
    {"FloorCeilFractTrunc",
     "float x = -v.one * 1.25; return float4(floor(x), ceil(x), fract(x), "
     "trunc(x));",
     {-2, -1, 0.75F, -1}},
    {"RoundAwayRintToEven",
     "float x = v.half_; return float4(round(x), round(-x - 2), rint(x), "
     "rint(x + 1));",
     {1, -3, 0, 2}},
    {"FmodKeepsTheDividendsSign",
     "return float4(fmod(-v.one * 5.5, 2), fmod(v.two * 3.5, -2), 0, "
     "0);",
     {-1.5F, 1, 0, 0}},
    {"MixStepSmoothstep",
     "return float4(mix(v.one, 5.0, 0.25), step(v.one, 0.5), step(0.5, v.one), "
     "smoothstep(0.0, 2.0, v.one));",
     {2, 0, 1, 0.5F}},
    {"PowSqrtRsqrt",
     "return float4(pow(v.two, 3), pow(-v.two, 2.0), sqrt(v.two * 8), rsqrt(v.two "
     "* 2));",
     {8, 4, 4, 0.5F}},
    {"SignAbsCopysign",
     "return float4(sign(-v.two), abs(-v.i3), fabs(-v.half_), copysign(v.two, "
     "-1.0));",
     {-1, 3, 0.5F, -2}},
    {"DotCrossLength",
     "float3 a = float3(v.one, 2, 2), b = float3(0, 1, 0); return float4(dot(a, "
     "b), length(a), cross(a, b).x, distance(a, b));",
     {2, 3, -2, std::sqrt(6.0F)}},
    {"NormalizeReflectFaceforward",
     "float2 n = normalize(float2(0, v.two)); float2 r = "
     "reflect(float2(1, -1), n); return float4(n, r);",
     {0, 1, 1, 1}},
    {"ExpLogFamilies",
     "return float4(exp2(v.two), log2(v.two * 4), exp10(v.two), log(exp(v.one)));",
     {4, 3, 100, 1}},
    {"SincosWritesItsReference",
     "float c; float s = sincos(v.zero, c); return float4(s, c, "
     "atan2(v.one, v.one) * 4, 0);",
     {0, 1, 3.14159274F, 0}},
    {"ModfAndFrexp",
     "float w; float f = modf(-v.one * 2.25, w); int e; float m = frexp(v.two * 6, "
     "e); return float4(f, w, m, e);",
     {-0.25F, -2, 0.75F, 4}},
    {"LdexpAndFma",
     "return float4(ldexp(v.one, 4), fma(v.two, 3, 1), fdim(v.one, v.two), "
     "fdim(v.two, v.one));",
     {16, 7, 0, 1}},
    {"SelectByCondition", "return select(float4(0), v.v1234, v.v1234 > 2.5);", {0, 0, 3, 4}},
    {"NanAndInfinity",
     "float n = v.zero / v.zero; return float4(isnan(n), isinf(v.one / v.zero), "
     "isfinite(v.one), isnan(v.one));",
     {1, 1, 1, 0}},
    {"CountingBits",
     "return float4(popcount(v.u5), clz(v.u5), ctz(v.u5 << 4), clz(v.i3 - 3));",
     {2, 29, 4, 32}},
    {"BitFields",
     "return float4(extract_bits(v.u5 << 4, 4, 4), insert_bits(0u, v.u5, 1, 2), "
     "reverse_bits(v.u5) >> 29, rotate(v.u5, 31u) == 0x80000002u);",
     {5, 2, 5, 1}},
    {"HalvingAndSaturatingSums",
     "uint m = 0xFFFFFFF0u + v.u5; return float4(hadd(m, m) == m, "
     "addsat(m, 100u) == 0xFFFFFFFFu, subsat(v.u5, 9u), "
     "addsat(0x7FFFFFFF, v.i3) == 0x7FFFFFFF);",
     {1, 1, 0, 1}},
    {"HighHalfOfProducts",
     "return float4(mulhi(0x80000000u + v.u5 - 5u, 6u), mulhi(-v.i3, 1 << "
     "30), absdiff(v.i3, -4), mad24(v.i3, 4, 1));",
     {3, -1, 7, 13}},
    {"ThreeArgumentForms",
     "return float4(min3(v.two, v.one, 3.0), max3(v.i3, 9, 4), "
     "median3(v.two, v.one, 3.0), 0);",
     {1, 9, 2, 0}},
    {"FastAndPreciseNamespaces",
     "return float4(fast::sqrt(v.two * 2), precise::max(v.one, v.two), "
     "metal::fast::floor(1.5 * v.one), 0);",
     {2, 2, 1, 0}},
    {"PackAndUnpack",
     "uint p = pack_float_to_unorm4x8(float4(v.one, 0, 1, 0)); return "
     "unpack_unorm4x8_to_float(p) + float4(p == 0x00FF00FFu, 0, 0, 0);",
     {2, 0, 1, 0}},
    {"Derivatives",
     "return float4(dfdx(fragCoord.x), dfdy(fragCoord.y), fwidth(fragCoord.x * 2), "
     "v.zero);",
     {1, 1, 2, 0}},
    {"FragmentPositionStartsUpperLeft",
     "return float4(fragCoord.xy, fragCoord.z, fragCoord.w);",
     {0.5F, 0.5F, 0, 1}},
};

std::vector<std::byte> valueBytes() {
    const Values values;
    std::vector<std::byte> bytes(sizeof(values));
    std::memcpy(bytes.data(), &values, sizeof(values));
    return bytes;
}

void expectPixel(const std::string& source, const std::array<float, 4>& expected,
                 const std::vector<std::vector<std::byte>>& buffers) {
    const auto compiled = compileAndValidate(source);
    ASSERT_EQ(compiled.text, "");
    ASSERT_EQ(compiled.validator, "");
    auto* runner = vantor::tests::VulkanRunner::shared();
    ASSERT_NE(runner, nullptr) << "no Vulkan 1.3 device answers";
    std::string problem;
    const auto pixel = runner->draw(*compiled.result.module, buffers, problem);
    ASSERT_TRUE(pixel) << problem;
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR((*pixel)[i], expected[i], 1e-5F + std::fabs(expected[i]) * 2e-6F)
            << "component " << i;
    }
}

class Execution : public testing::TestWithParam<Case> {};

TEST_P(Execution, GivesTheExpectedPixel) {
    const auto& item = GetParam();
    expectPixel(fragmentSource(item.body, item.globals), item.expected, {valueBytes()});
}

INSTANTIATE_TEST_SUITE_P(Language, Execution, testing::ValuesIn(kCases),
                         [](const auto& test) { return std::string(test.param.name); });

struct WholeCase {
    const char* name;
    const char* source; // without the header and v_main
    std::array<float, 4> expected;
};

void PrintTo(const WholeCase& item, std::ostream* stream) { *stream << item.name; }

const WholeCase kWholeCases[] = {
    {"ValuesPassBetweenStagesByName",
     "struct Out { float4 position [[position]]; float2 uv; float3 color [[user(c)]]; int n "
     "[[flat]]; };\n"
     "vertex Out v_main(uint vid [[vertex_id]]) { Out o; float2 p = float2((vid << 1) & 2, vid & "
     "2); o.position = float4(p * 2 - 1, 0, 1); o.uv = p; o.color = float3(3, 4, 5); o.n = -6; "
     "return o; }\n"
     "struct In { float3 shade [[user(c)]]; float2 uv; int n [[flat]]; };\n"
     "fragment float4 f_main(In in [[stage_in]]) { return float4(in.uv.x, in.uv.y, in.shade.z, "
     "in.n); }\n",
     {0.125F, 0.875F, 5, -6}},
    {"StageInCarriesThePosition",
     "struct Out { float4 position [[position]]; };\n"
     "vertex Out v_main(uint vid [[vertex_id]]) { Out o; float2 p = float2((vid << 1) & 2, vid & "
     "2); o.position = float4(p * 2 - 1, 0.25, 1); return o; }\n"
     "fragment float4 f_main(Out in [[stage_in]]) { return in.position; }\n",
     {0.5F, 0.5F, 0.25F, 1}},
    {"TexturesAreReadAndSampled",
     "vertex float4 v_main(uint vid [[vertex_id]]) { return float4(float2((vid << 1) & 2, vid & 2) "
     "* 2 - 1, 0, 1); }\n"
     "fragment float4 f_main(texture2d<float> t [[texture(0)]]) { constexpr sampler s(filter::"
     "nearest, address::repeat); float4 a = t.read(uint2(2, 3)); float4 b = t.sample(s, "
     "float2(1.125, 0.375)); return float4(a.z, b.x, b.y, t.get_width() * 10 + t.get_height()); "
     "}\n",
     {14, 0, 1, 44}},
    {"LinearFilteringBlends",
     "constexpr sampler s(filter::linear, address::clamp_to_edge);\n"
     "vertex float4 v_main(uint vid [[vertex_id]]) { return float4(float2((vid << 1) & 2, vid & 2) "
     "* 2 - 1, 0, 1); }\n"
     "float4 look(texture2d<float> t, sampler q, float2 at) { return t.sample(q, at, level(0)); }\n"
     "fragment float4 f_main(texture2d<float> t [[texture(3)]]) { return look(t, s, float2(0.5, "
     "0.5)); }\n",
     {1.5F, 1.5F, 7.5F, 1}},
    {"DeviceBuffersAreWrittenAndReadBack",
     "vertex float4 v_main(uint vid [[vertex_id]]) { return float4(float2((vid << 1) & 2, vid & 2) "
     "* 2 - 1, 0, 1); }\n"
     "fragment float4 f_main(device float* out [[buffer(2)]], constant float* in [[buffer(0)]]) { "
     "out[0] = in[1] + in[2]; float a = out[0]; out[0] = 9; return float4(a, out[0], in[3], 0); "
     "}\n",
     {3, 9, 0.5F, 0}},
};

class WholeExecution : public testing::TestWithParam<WholeCase> {};

TEST_P(WholeExecution, GivesTheExpectedPixel) {
    const auto& item = GetParam();
    expectPixel("#include <metal_stdlib>\nusing namespace metal;\n" + std::string(item.source),
                item.expected, {valueBytes(), valueBytes()});
}

INSTANTIATE_TEST_SUITE_P(Stages, WholeExecution, testing::ValuesIn(kWholeCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(ExecutionTest, BufferStructsAreLaidOutAsMetalLaysThemOut) {
    // float3 takes 16 bytes, packed_float3 12, arrays are tight, matrix columns are aligned.
    std::vector<float> words(40);
    for (size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<float>(i);
    }
    std::vector<std::byte> bytes(words.size() * sizeof(float));
    std::memcpy(bytes.data(), words.data(), bytes.size());
    // a: 0; b: words 4 to 6; c: word 8; d: words 9 to 11; e: word 12 to 14; m: words 16 to 27.
    expectPixel(
        "#include <metal_stdlib>\nusing namespace metal;\n"
        "struct L { float a; float3 b; float c; packed_float3 d; float e[3]; float3x3 m; "
        "};\n"
        "vertex float4 v_main(uint vid [[vertex_id]]) { return float4(float2((vid << 1) & "
        "2, vid & 2) * 2 - 1, 0, 1); }\n"
        "fragment float4 f_main(constant L& l [[buffer(0)]]) { int i = int(l.a) + 1; return "
        "float4(l.b.z, l.d.y, l.e[i], l.m[i].y); }\n",
        {6, 10, 13, 21}, {bytes});
}

} // namespace
} // namespace msl::tests
