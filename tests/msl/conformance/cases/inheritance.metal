//! case BasesGiveTheirMembersAndFunctions
struct Base { float a; float twice() const { return a * 2; } void grow(float by) { a += by; } };
struct Derived : Base { float b; float sum() const { return twice() + b + a; } };
//! body
Derived d; d.a = v.two; d.b = 3; d.grow(1); return float4(d.sum(), d.a, d.twice(), d.b);
//! gives 12 3 6 3
//! case ADerivedMemberHidesTheBases
struct Base { float x = 1; float f() const { return 10; } };
struct Derived : public Base { float x = 2; float f() const { return Base::f() + x; } };
//! body
Derived d; return float4(d.x, d.f(), sizeof(Derived), sizeof(Base));
//! gives 2 12 8 4
//! case AReferenceToTheBaseNamesTheSameObject
struct Base { float a; }; struct Derived : Base { float b; };
void raise(thread Base& x) { x.a += 5; } float look(thread const Base& x) { return x.a; }
//! body
Derived d; d.a = v.one; d.b = 2; raise(d); thread Base& r = d; r.a *= 2; Base copy = d; copy.a = 0; return float4(d.a, d.b, look(d), copy.a);
//! gives 12 2 12 0
//! case APointerToTheBasePointsIntoTheObject
struct Base { float a; }; struct Derived : Base { float b; };
void raise(thread Base* x) { x->a += 5; }
//! body
Derived d; d.a = v.one; d.b = 2; raise(&d); return float4(d.a, d.b, 0, 0);
//! gives 6 2 0 0
//! case ConstructorsInitialiseTheirBases
struct Base { float a; Base(float x) : a(x * 2) {} };
struct Derived : Base { float b; Derived(float x, float y) : Base(x), b(y) {} };
//! body
Derived d(v.two, 7); return float4(d.a, d.b, 0, 0);
//! gives 4 7 0 0
//! case AConstructorMayHandOnToAnother
struct P { float a, b; P(float x, float y) : a(x), b(y) {} P(float x) : P(x, x * 10) { b += 1; } };
//! body
P p(v.two); return float4(p.a, p.b, 0, 0);
//! gives 2 21 0 0
//! case DefaultsOfBasesAreKept
struct Base { float a = 4; float3 c = float3(5); }; struct Derived : Base { float b = 6; };
//! body
Derived d; Derived e = Derived(); return float4(d.a, d.b, e.c.z, e.a);
//! gives 4 6 5 4
//! case BasesOfBases
struct A { float a; float one() const { return a; } }; struct B : A { float b; float two() const { return one() + b; } }; struct C : B { float c; };
//! body
C c; c.a = 1; c.b = v.two; c.c = 3; A front = c; return float4(c.two(), c.one(), front.a, c.c);
//! gives 3 1 1 3
//! case SeveralBases
struct A { float a = 1; }; struct B { float b = 2; float f() const { return b * 3; } }; struct C : A, B { float c = 3; };
float of(thread const B& x) { return x.b; }
//! body
C c; c.b = v.two + 5; return float4(c.a, c.f(), of(c), c.c);
//! gives 1 21 7 3
//! case BasesMayBeTemplates
template <typename T> struct Holder { T value; T get() const { return value; } };
struct Two : Holder<float2> { float extra; };
template <typename T> struct Deep : Holder<T> { T twice() const { return this->value * T(2); } };
//! body
Two t; t.value = v.v12; t.extra = 9; Deep<int> d; d.value = v.i3; return float4(t.get(), d.twice(), t.extra);
//! gives 1 2 6 9
//! case TypesAndConstantsOfBasesAreNamesOfTheDerived
struct Base { typedef float2 Pair; enum { kTen = 10 }; static constexpr constant float kHalf = 0.5; };
struct Derived : Base { Pair p; float f() const { return p.y * kTen + kHalf; } };
//! body
Derived d; d.p = v.v12; Derived::Pair q = d.p; return float4(d.f(), q.x, Derived::kTen, 0);
//! gives 20.5 1 10 0
//! case EmptyBasesTakeNoRoom
struct Empty { float f() const { return 3; } }; struct Full : Empty { float a; };
//! body
Full x; x.a = v.one; return float4(sizeof(Full), x.f(), x.a, 0);
//! gives 4 3 1 0
//! case LayoutPutsTheBaseInFront
struct Base { float a; float b; }; struct Derived : Base { float3 c; float d; };
//! parameters , constant Derived& x [[buffer(1)]]
//! body
return float4(x.b, x.c.y, x.d, sizeof(Derived));
//! gives 1 5 8 48
//! case StagesShareABase
struct Common { float4 position [[position]]; float2 uv; };
struct Out : Common { float3 color; };
vertex Out v_main(uint vid [[vertex_id]]) { Out o; o.position = float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); o.uv = float2(3, 4); o.color = float3(5, 6, 7); return o; }
fragment float4 f_main(Out in [[stage_in]]) { return float4(in.uv, in.color.yz); }
//! gives 3 4 6 7
//! case OperatorsOfBases
struct Base { float a; Base operator+(Base o) const { return Base{a + o.a}; } float operator[](int i) const { return a * i; } float operator()(float x) const { return a + x; } };
struct Derived : Base { float b; };
//! body
Derived d; d.a = v.two; Base s = d + d; return float4(s.a, d[3], d(10), 0);
//! gives 4 6 12 0
//! case VirtualFunctionsAreNone
struct Base { float a; }; struct Derived : virtual Base { };
//! body
return 0;
//! refused the language has no virtual functions and base structs
//! case NumbersAreNoBases
struct Derived : float { };
//! body
return 0;
//! refused 'float' cannot be the base of a struct
//! case UnnamedMembersGiveTheirNames
struct P { struct { float a; float b; }; float c; union { float f; uint u; }; };
//! body
P p; p.a = v.one; p.b = 2; p.c = 3; p.f = 1; return float4(p.a, p.b, p.c, p.u == 0x3F800000u);
//! gives 1 2 3 1
//! case StaticFunctionsOfBases
struct Base { static float f(float x) { return x + 1; } }; struct Derived : Base { float g(float x) const { return f(x) * 2; } };
//! body
Derived d; return float4(Derived::f(v.two), d.g(v.two), Base::f(0), d.f(1));
//! gives 3 6 1 2
