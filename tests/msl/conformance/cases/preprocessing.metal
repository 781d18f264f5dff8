//! case ObjectsAndFunctions
#define ONE 1
#define ADD(a, b) ((a) + (b))
#define TWICE(x) ADD(x, x)
//! body
return float4(ONE, ADD(ONE, 2), TWICE(3), TWICE(TWICE(v.one)));
//! gives 1 3 6 4
//! case ArgumentsAreExpandedBeforeTheyAreUsed
#define PLUS +1
#define ID(x) x
#define F(x) ID(x PLUS)
//! body
return float4(F(v.one), F(F(1)), ID(ID(ID(7))), ID(F(2)));
//! gives 2 3 7 3
//! case NamesAreNotExpandedInsideThemselves
//! body
float foo = v.one, bar = v.two;
#define foo (4 + foo)
#define bar baz
#define baz (bar + 1)
return float4(foo, bar, 0, 0);
//! gives 5 3 0 0
//! case PastingMakesTokens
#define JOIN(a, b) a##b
#define XJOIN(a, b) JOIN(a, b)
#define NUM 4
#define VAR(n) value_##n
//! body
float VAR(x) = v.two; int ab4 = 7; return float4(value_x, XJOIN(ab, NUM), JOIN(1, 2), JOIN(0x, F));
//! gives 2 7 12 15
//! case VariableArguments
#define CALL(f, ...) f(__VA_ARGS__)
#define FIRST(a, ...) a
#define SECOND(a, b, ...) b
#define MAKE(...) float4(__VA_ARGS__)
//! body
return MAKE(CALL(max, v.one, 5.0), FIRST(2, 3, 4), SECOND(6, 7), CALL(abs, -8));
//! gives 5 2 7 8
//! case EmptyArguments
#define PAIR(a, b) a 1 b
#define NOTHING
#define WRAP(x) (x)
//! body
return float4(PAIR(, ), PAIR(-, ), PAIR(, + 1), WRAP(NOTHING 3 NOTHING));
//! gives 1 -1 2 3
//! case ConditionsComputeLikeCpp
#define A 3
#if (A + 1) * 2 == 8 && A % 2 && !defined(B) || 0
#define R1 1
#else
#define R1 0
#endif
#if A > 2 ? A < 10 : 0
#define R2 2
#endif
#if -1 < 0u
#define R3 3
#else
#define R3 4
#endif
#if (1 << 3 | 1) ^ ~0 & 0xF0 >> 4
#define R4 5
#endif
//! body
return float4(R1, R2, R3, R4);
//! gives 1 2 4 5
//! case NestedConditions
#define X 2
#if X == 1
#  if 1
#    define P 1
#  endif
#elif X == 2
#  ifdef UNKNOWN
#    define P 2
#  elif !defined(X)
#    define P 3
#  else
#    define P 4
#  endif
#else
#  error never here
#endif
#ifndef P
#  define P 5
#endif
//! body
return P;
//! gives 4 4 4 4
//! case UndefinitionAndRedefinition
#define N 1
#undef N
#define N 2
#undef M
#ifdef M
#error M is not defined
#endif
//! body
return N;
//! gives 2 2 2 2
//! case LinesAndFiles
//! body
int a = __LINE__; int b = __LINE__; return float4(a == b, __LINE__ > 5, __METAL_VERSION__ >= 300, 1);
//! gives 1 1 1 1
//! case SplicedLines
#define LONG(a, b) \
    ((a) * \
     (b))
//! body
float x = LONG(v.two, \
    3); return float4(x, LONG(2, 4), 0, 0);
//! gives 6 8 0 0
//! case PragmasAndEmptyDirectives
#pragma once
#pragma mark - Shaders
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wunused-variable"
#
_Pragma("clang loop unroll(full)")
//! body
#pragma unroll
for (int i = 0; i < 2; i++) {} return v.two;
//! gives 2 2 2 2
//! case StringsInMacrosAndComments
#define STR(x) #x
#define ASSERT(c, m) static_assert(c, m)
ASSERT(sizeof(float) == 4, "four" " bytes"); ASSERT(1, STR(a + b));
//! body
/* a comment // inside */ float a = v.one; // "not a string
return float4(a /* in between */ + 1);
//! gives 2 2 2 2
//! case CallsOverSeveralLines
#define MAX3(a, b, c) max(max(a, b), c)
//! body
return float4(MAX3(
    v.one,
    max(2.0, 3.0),
    v.two
));
//! gives 3 3 3 3
//! case FunctionMacrosWithoutParentheses
#define g(x) ((x) * 2)
float g2(float g) { return g + 1; }
//! body
float g = 3; return float4(g, g(2), g2(g), g (4));
//! gives 3 4 4 8
//! case HeaderGuardsOfSharedHeaders
#ifdef __cplusplus
#define CPP 1
#endif
#if defined(__METAL__) || defined(__METAL_VERSION__)
#define SHADER 2
#endif
#ifdef __OBJC__
#error not here
#endif
#if __has_include(<simd/simd.h>)
#include <simd/simd.h>
#endif
//! body
return float4(CPP, SHADER, sizeof(vector_float3), sizeof(simd_float4x4));
//! gives 1 2 16 64
//! case UnendedConditions
#if 1
//! body
return 0;
//! refused this condition is never ended by #endif
//! case TooFewArguments
#define F(a, b) a
//! body
return F(1);
//! refused
//! case UnknownDirectives
#defin X 1
//! body
return 0;
//! refused
//! case DivisionByZeroInConditions
#if 1 / 0
#endif
//! body
return 0;
//! refused
