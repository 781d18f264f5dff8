//! case TypedefOfAnUnnamedStruct
typedef struct { float a; float2 b; } Pair;
//! body
Pair p; p.a = v.one; p.b = v.v12; return float4(p.a, p.b, 0);
//! gives 1 1 2 0
//! case TypedefOfANamedStruct
typedef struct Named { float a; } Alias;
//! body
Alias x = {v.two}; Named y = x; return float4(y.a);
//! gives 2 2 2 2
//! case StructTagBeforeTheName
struct Tag { float a; };
float take(struct Tag t) { return t.a; }
//! body
struct Tag t = {v.two}; return float4(take(t));
//! gives 2 2 2 2
//! case DesignatedInitialisersLeaveTheRestZero
struct P { float a; float b; float c; };
//! body
P p = {.c = v.two, }; P q = P{.a = 1, .b = v.two}; return float4(p.a, p.c, q.b, q.c);
//! gives 0 2 2 0
//! case NestedDesignatedInitialisers
struct In { float x; float y; }; struct Out { In in; float z; };
//! body
Out o = {.in = {.y = v.two}, .z = 3}; return float4(o.in.x, o.in.y, o.z, 0);
//! gives 0 2 3 0
//! case AggregateFromFunctionalBraces
struct P { float2 a; float b; };
P make(float x) { return {float2(x), x + 1}; }
//! body
P p = make(v.two); return float4(p.a, p.b, P{v.v12, 7}.b);
//! gives 2 2 3 7
//! case EmptyBracesZeroEverything
struct P { float a; int b[2]; float3 c; bool d; };
//! body
P p = {}; P q{}; return float4(p.a, p.b[1], q.c.z, q.d);
//! gives 0 0 0 0
//! case DefaultMemberValues
struct P { float a = 4; int b = 2 + 1; float3 c = float3(1, 2, 3); };
//! body
P p; P q{7}; P r = {.b = 9}; return float4(p.a + q.a, r.b, r.a, p.c.y);
//! gives 11 9 4 2
//! case StaticMembers
struct P { static constant int count = 4; static float twice(float x) { return x * 2; } };
//! body
return float4(P::count, P::twice(v.two), 0, 0);
//! gives 4 4 0 0
//! case StaticConstexprMember
struct P { static constexpr constant float kScale = 2.5; float get() const { return kScale; } };
//! body
P p; return float4(P::kScale, p.get(), 0, 0);
//! gives 2.5 2.5 0 0
//! case NestedStructs
struct Outer { struct Inner { float x; }; Inner a; float y; };
//! body
Outer o; o.a.x = v.two; o.y = 3; Outer::Inner i = o.a; return float4(i.x, o.y, 0, 0);
//! gives 2 3 0 0
//! case NestedStructsWithMemberInOneDeclaration
struct Outer { struct { float x; float y; } a; struct Named { int n; } b[2]; };
//! body
Outer o; o.a.x = v.two; o.a.y = 5; o.b[1].n = 6; return float4(o.a.x, o.a.y, o.b[1].n, 0);
//! gives 2 5 6 0
//! case MemberFunctionsSeeLaterMembers
struct C { float twice() const { return value * factor(); } float factor() const { return 2; } float value; };
//! body
C c; c.value = v.two; return float4(c.twice());
//! gives 4 4 4 4
//! case ConstructorsAreOverloaded
struct R { float a, b; R() : a(1), b(2) {} R(float x) : a(x), b(x) {} R(float x, float y) { a = x; b = y; } };
//! body
R r; R s(v.two); R t = R(3, 4); R u{5, 6}; return float4(r.b, s.a, t.b, u.a);
//! gives 2 2 4 5
//! case ConstructorsWithBraceInitialisers
struct R { float2 a; float b; R(float x) : a{x, x + 1}, b{x * 2} {} };
//! body
R r(v.two); return float4(r.a, r.b, 0);
//! gives 2 3 4 0
//! case DefaultedConstructor
struct R { float a; R() = default; R(float x) : a(x) {} };
//! body
R r; r.a = 3; R s(v.two); return float4(r.a, s.a, 0, 0);
//! gives 3 2 0 0
//! case ConvertingConstructorOfAnArgument
struct R { float a; R(float x) : a(x) {} };
float get(R r) { return r.a; }
//! body
return float4(get(v.two), get(R(3)), 0, 0);
//! gives 2 3 0 0
//! case ConversionOperators
struct R { float a; operator float() const { return a * 2; } };
//! body
R r{v.two}; float x = r; return float4(x, float(r), r + 1.0f, 0);
//! gives 4 4 5 0
//! case MemberOperators
struct V { float x; V operator+(V o) const { return {x + o.x}; } V operator-() const { return {-x}; }
  thread V& operator+=(float s) { x += s; return *this; } float operator[](int i) const { return x * i; }
  float operator()(float a, float b) const { return x + a + b; } bool operator==(V o) const { return x == o.x; } };
//! body
V a{v.two}; V b = a + V{3}; b += 4; V c = -b; return float4(b.x, c.x, a[5], a(1, 2));
//! gives 9 -9 10 5
//! case FreeOperators
struct V { float x; float y; };
V operator*(V a, float s) { return {a.x * s, a.y * s}; }
V operator*(float s, V a) { return a * s; }
bool operator<(V a, V b) { return a.x < b.x; }
thread V& operator-=(thread V& a, V b) { a.x -= b.x; a.y -= b.y; return a; }
//! body
V a{v.one, 2}; V b = 3 * a; b -= a; return float4(b.x, b.y, a < b, 0);
//! gives 2 4 1 0
//! case MemberFunctionDefinedOutside
struct C { float r; float twice() const; static float half_of(float x); };
float C::twice() const { return r * 2; }
float C::half_of(float x) { return x / 2; }
//! body
C c{v.two}; return float4(c.twice(), C::half_of(3), 0, 0);
//! gives 4 1.5 0 0
//! case ThisPointer
struct C { float r; float get() const { return this->r; } void set(float r) { this->r = r; } C self() const { return *this; } };
//! body
C c{1}; c.set(v.two); return float4(c.get(), c.self().r, 0, 0);
//! gives 2 2 0 0
//! case MemberTemplates
struct C { float r; template <typename T> T scaled(T x) const { return x * T(r); } };
//! body
C c{v.two}; return float4(c.scaled(3.0f), c.scaled(v.v12), c.scaled(4));
//! gives 6 2 4 8
//! case ArraysOfStructs
struct P { float a; float2 b; };
//! body
P p[3] = {{1, float2(2)}, {3, float2(4)}, {v.two, v.v12}}; int i = v.i3 - 1; p[i].b.y += 10; return float4(p[i].a, p[i].b, p[1].b.x);
//! gives 2 1 12 4
//! case StructsCompareAfterCopy
struct P { float a[2]; float b; };
//! body
P p = {{1, 2}, 3}; P q = p; q.a[1] = v.two * 4; p = q; q.b = 0; return float4(p.a[0], p.a[1], p.b, q.b);
//! gives 1 8 3 0
//! case StructReturnedAndItsMemberTaken
struct P { float3 a; };
P make(float x) { P p; p.a = float3(x, x + 1, x + 2); return p; }
//! body
return float4(make(v.two).a.zyx, make(1).a.y);
//! gives 4 3 2 2
//! case StructByReference
struct P { float a; float b; };
void fill(thread P& p, float x) { p.a = x; p.b = x * 2; }
float sum(thread const P& p) { return p.a + p.b; }
//! body
P p; fill(p, v.two); return float4(sum(p), p.b, 0, 0);
//! gives 6 4 0 0
//! case StructByPointer
struct P { float a; float b; };
void fill(thread P* p, float x) { p->a = x; (*p).b = x * 2; }
//! body
P p; fill(&p, v.two); thread P* q = &p; q->a += 1; return float4(p.a, q->b, 0, 0);
//! gives 3 4 0 0
//! case PlainEnums
enum Mode { first, second, third = 10, fourth };
float pick(Mode m) { switch (m) { case first: return 1; case third: return 3; default: return 9; } }
//! body
Mode m = v.i3 == 3 ? third : first; return float4(pick(m), pick(second), fourth, int(m));
//! gives 3 9 11 10
//! case ScopedEnumsWithUnderlyingType
enum class Kind : uint { a = 4, b, c = 1u << 5 };
//! body
Kind k = Kind::b; return float4(k == Kind::b, uint(k), static_cast<uint>(Kind::c), Kind::a < Kind::b);
//! gives 1 5 32 1
//! case EnumInsideStruct
struct P { enum Mode { x = 2, y = 7 }; Mode m; };
//! body
P p; p.m = P::y; return float4(p.m, P::x, p.m == P::y, 0);
//! gives 7 2 1 0
//! case EnumOfSmallType
enum Flags : uint8_t { none = 0, one = 1, big = 255 };
typedef enum { A, B } AB;
//! body
Flags f = big; AB ab = B; return float4(f, sizeof(Flags), ab, f & 15);
//! gives 255 1 1 15
//! case EnumsFromIntegers
enum Mode { first, second, third };
enum class K { a, b };
//! body
Mode m = Mode(v.i3 - 1); Mode n = (Mode)1; K k = static_cast<K>(v.i3 - 2); return float4(m == third, n == second, k == K::b, 0);
//! gives 1 1 1 0
//! case AnonymousEnumConstants
enum { kCount = 3, kMore = kCount * 2 };
//! body
float a[kMore] = {1, 2, 3, 4, 5, v.two}; return float4(a[kCount], sizeof(a) / sizeof(float), 0, 0);
//! gives 4 6 0 0
