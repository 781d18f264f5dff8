//! case DefaultArguments
float f(float a, float b = 2, float c = 3) { return a * 100 + b * 10 + c; } float3 tint(float3 c, float3 by = float3(2), float k = 1.0f / 2) { return c * by * k; }
//! body
return float4(f(v.one), f(v.one, 5), f(1, 5, 7), tint(float3(v.two)).x);
//! gives 123 153 157 2
//! case OverloadsByType
float f(int x) { return 1; } float f(uint x) { return 2; } float f(float x) { return 3; } float f(bool x) { return 4; }
float g(float2 x) { return 5; } float g(float3 x) { return 6; } float g(int2 x) { return 7; }
//! body
return float4(f(v.i3) * 10 + f(v.u5), f(v.one) * 10 + f(v.one > 0), g(v.v12) * 10 + g(float3(1)), g(int2(1)) * 10 + f(short(1)));
//! gives 12 34 56 71
//! case BracesAsArguments
struct P { float a; float b; }; float sum(P p) { return p.a + p.b; } float of(float2 x, float3 y = {1, 2, 3}) { return x.x * 100 + x.y * 10 + y.z; } float4 pick(P p, int i) { return p.a; }
struct Ray { float3 o, d; Ray(float3 a, float3 b) : o(a), d(b) {} };
float3 at(Ray r, float t) { return r.o + r.d * t; }
//! body
Ray r({v.one, 2, 3}, {0, 1, 0}); return float4(sum({v.one, 2}), of({1, v.two}), at({{1, 1, 1}, {0, 0, 1}}, v.two).z, r.d.y + pick({.a = 5}, 0).x);
//! gives 3 123 3 6
//! case FreeAndMemberOperatorsTogether
struct C { float r; C operator-() const { return C{-r}; } C operator+(C o) const { return C{r + o.r}; } bool operator<(C o) const { return r < o.r; } };
C operator-(C a, C b) { return a + -b; } C operator*(float s, C c) { return C{s * c.r}; } C operator*(C c, float s) { return s * c; } bool operator==(C a, C b) { return a.r == b.r; } bool operator!=(C a, C b) { return !(a == b); }
//! body
C a{v.two}, b{5}; C d = a - b; return float4(d.r, (2 * a + b * 3).r, (a < b) + (a == a) * 10, a != b);
//! gives -3 19 11 1
//! case AssignmentOperators
struct V { float x, y; thread V& operator+=(V o) thread { x += o.x; y += o.y; return *this; } thread V& operator*=(float s) thread { x *= s; y *= s; return *this; } thread V& operator=(float s) thread { x = y = s; return *this; } thread V& operator++() thread { x += 1; return *this; } };
//! body
V a{1, 2}; a += V{v.two, 3}; (a *= 2) += V{1, 1}; ++a; V b{0, 0}; b = 5.0f; return float4(a.x, a.y, b.x, b.y);
//! gives 8 11 5 5
//! case ConversionOperators
struct Angle { float degrees; operator float() const { return degrees * 2; } explicit operator int() const { return 7; } }; float twice(float x) { return x * 2; }
struct Colour { float3 c; operator float3() const { return c; } };
//! body
Angle a{v.two}; Colour c{float3(1, v.two, 3)}; float x = a; float3 y = c; return float4(x, twice(a), y.z, int(a));
//! gives 4 8 3 7
//! case ConvertingConstructors
struct M { float x; M(float a) : x(a * 10) {} M(float2 a) : x(a.x + a.y) {} }; float get(M m) { return m.x; }
//! body
M m = v.two; M n = v.v12; M o(3); return float4(get(v.one), m.x, n.x, get(float2(4, 5)) + o.x);
//! gives 10 20 3 39
//! case FunctionObjectsAreTemplateArguments
struct Add { float operator()(float a, float b) const { return a + b; } }; struct Mul { float operator()(float a, float b) const { return a * b; } };
template <typename Op> float fold(float4 x, Op op) { return op(op(x.x, x.y), op(x.z, x.w)); }
template <typename F> float3 each(F f) { return float3(f(1, 2), f(2, 3), f(3, 4)); }
//! body
return float4(fold(v.v1234, Add()), fold(v.v1234, Mul()), each(Mul()).yz);
//! gives 10 24 6 12
//! case TemplatesOfValuesAndTypes
template <int N, typename T = float> struct Poly { T c[N]; T at(T x) const { T r = 0; for (int i = N; i-- > 0;) r = r * x + c[i]; return r; } static constexpr int degree() { return N - 1; } };
template <bool B> float flag() { return B ? 1 : 2; } template <typename T, int N> T sumOf(vec<T, N> x) { T s = 0; for (int i = 0; i < N; i++) s += x[i]; return s; }
//! body
Poly<3> p = {{1, 2, 3}}; return float4(p.at(v.two), Poly<4, half>::degree(), flag<true>() + flag<(1 > 2)>() * 10, sumOf(v.v1234) + sumOf(int2(1, 2)));
//! gives 17 3 21 13
//! case StaticMembersAndNestedTypes
struct Outer { struct Inner { float x; float twice() const { return x * 2; } }; enum Kind { A = 3, B }; static constant constexpr float kTwo = 2; static float half_(float x) { return x / kTwo; } Inner i; Kind k; };
//! body
Outer o; o.i.x = v.two; o.k = Outer::B; Outer::Inner n{5}; return float4(o.i.twice(), o.k, Outer::half_(n.x), Outer::kTwo);
//! gives 4 4 2.5 2
//! case NamespacesNestAndAlias
namespace a { constant float k = 1; namespace b { float f() { return k + 1; } namespace c { float g() { return f() + k; } } } inline namespace v2 { float h() { return 7; } } }
namespace ab = a::b; using namespace a::b::c;
//! body
return float4(a::b::f(), ab::c::g(), g(), a::h()) * v.one;
//! gives 2 3 3 7
//! case PrototypesAndMutualUse
float odd(float x); float even(float x) { return x * 2; } float odd(float x) { return even(x) + 1; } static inline float last(float a, float b); 
float user(float x) { return last(x, 1); } static inline float last(float a, float b) { return a - b; }
//! body
return float4(odd(v.two), user(v.two), even(3), 0);
//! gives 5 1 6 0
//! case ConstantTablesInFunctions
float weight(int i) { const float w[3] = {0.25, 0.5, 0.25}; return w[i]; } float2 corner(uint i) { constexpr float2 c[] = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}}; return c[i & 3]; }
//! body
return float4(weight(v.i3 - 2), corner(v.u5), corner(2).y);
//! gives 0.5 1 -1 1
//! case ResultsOfCallsAreUsedAtOnce
struct S { float a[3]; float3 v; float get(int i) const { return a[i]; } }; S make(float x) { S s; for (int i = 0; i < 3; i++) s.a[i] = x + i; s.v = float3(x); return s; }
//! body
return float4(make(v.one).a[2], make(v.two).v.y, make(3).get(1), make(v.one).v.xyz.z);
//! gives 3 2 4 1
//! case EarlyReturnsInLoops
int first(float4 x, float limit) { for (int i = 0; i < 4; i++) { if (x[i] > limit) return i; } return -1; }
float search(float x) { for (int i = 0; i < 3; i++) for (int j = 0; j < 3; j++) { if (i * j == int(x)) return i * 10 + j; } return 99; }
//! body
return float4(first(v.v1234, v.two), first(v.v1234, 9), search(v.two), search(7));
//! gives 2 -1 12 99
//! case AliasesOfTemplates
template <typename T> using Pair = vec<T, 2>; template <typename T, int N> using Row = array<T, N>; using F4 = float4; typedef float Grid[2][2];
//! body
Pair<float> p = v.v12; Row<int, 3> r = {1, 2, v.i3}; Grid g = {{1, 2}, {3, 4}}; F4 q = 9; return float4(p.y, r[2], g[1][0], q.w);
//! gives 2 3 3 9
//! case EnumsInExpressions
enum Mode : uchar { kOff, kOn = 4, kAuto }; enum class Level { low = 1, high = 10 }; enum { kCount = 3 };
int cost(Level l) { return static_cast<int>(l) * 2; } float of(Mode m) { return m == kAuto ? 1 : 0; }
//! body
Mode m = kAuto; Level l = Level::high; return float4(m, cost(l), of(m) + sizeof(Mode), (l == Level::high) + kCount + (kOn | 1));
//! gives 5 20 2 9
//! case MembersAreInitialisedInEveryForm
struct D { float a = 1; float2 b = {2, 3}; int c[2] = {4, 5}; struct { float d = 6; } e; };
//! body
D x; D y{}; D z = {9}; D w = {.c = {7, 8}}; return float4(x.a + x.c[1], y.b.y + y.e.d, z.a + z.b.x, w.c[1] + w.a);
//! gives 6 9 11 9
//! case FloatsChooseBetweenIntAndFloat
float f(float a, float b) { return 1; } float f(int a, int b) { return 2; }
//! body
return float4(f(v.one, v.two), f(v.i3, 1), f(1.0f, 2.0f), f(short(1), 2));
//! gives 1 2 1 2
//! case NoLambdas
//! body
auto f = [](float x) { return x; }; return f(1);
//! refused the language has no lambda expressions
//! case NoBitFields
struct B { uint a : 4; uint b : 28; };
//! body
return 0;
//! refused bit-fields are not supported
//! case DeducedResultsMustBeKnown
auto later(float x); float use(float x) { return later(x); } auto later(float x) { return x; }
//! body
return use(1);
//! refused the type of what 'later' returns is not known before its definition
//! case MemberTemplatesAreCalled
struct P { float a, b; template <typename T> T as() const { return T(a) + T(b); } template <int N> float times(float x) const { return a * N + x; } };
//! body
P p{v.two, 3.5}; thread P* q = &p; return float4(p.as<int>(), p.template as<float>(), q->times<3>(1), p.a < p.b);
//! gives 5 5.5 7 1
//! case SaturatedProducts
//! body
return float4(madsat(0x40000000, v.i3, -5) == 0x7FFFFFFF, madsat(v.i3, 4, 5), madsat(0x80000000u, v.u5, 1u) == 0xFFFFFFFFu, madsat(char(100), char(-2), char(v.i3)));
//! gives 1 17 1 -128
//! case OperatorsOfEnumerations
enum Flags : uint { None = 0, A = 1u << 0, B = 1u << 1, C = 4 }; inline Flags operator|(Flags a, Flags b) { return Flags(uint(a) | uint(b)); } inline thread Flags& operator|=(thread Flags& a, Flags b) { a = a | b; return a; } inline bool has(Flags f, Flags x) { return (f & x) != 0; }
enum class Axis { x, y, z }; Axis operator++(Axis a) { return Axis((int(a) + 1) % 3); } bool operator!(Axis a) { return a == Axis::x; }
//! body
Flags f = A | B; f |= C; return float4(f, has(f, B) + (A & C), !Axis::x, f + 1);
//! gives 7 1 1 8
