//! case FunctionTemplateDeducesItsType
template <typename T> T twice(T x) { return x + x; }
//! body
return float4(twice(v.two), twice(v.i3), twice(v.v12));
//! gives 4 6 2 4
//! case FunctionTemplateOfTwoTypes
template <typename Tx, typename Ty> inline Tx mod(Tx x, Ty y) { return x - y * floor(x / y); }
//! body
return float4(mod(-v.one, 3.0f), mod(float2(5, -1) * v.one, 3.0f), mod(v.v12, v.v12).x);
//! gives 2 2 2 0
//! case IntegerTemplateParameter
template <int N> float pick(float4 x) { return x[N]; }
template <uint N, typename T> T power(T x) { T r = T(1); for (uint i = 0; i < N; ++i) r *= x; return r; }
//! body
return float4(pick<2>(v.v1234), power<3>(v.two), power<2, int>(v.i3), 0);
//! gives 3 8 9 0
//! case ArrayLengthIsDeduced
template <typename T, size_t N> T sum(thread const T (&a)[N]) { T s = T(0); for (size_t i = 0; i < N; i++) s += a[i]; return s; }
//! body
float a[3] = {1, 2, v.two}; int b[4] = {1, 2, 3, v.i3}; return float4(sum(a), sum(b), 0, 0);
//! gives 5 9 0 0
//! case VectorLengthIsDeduced
template <typename T, int N> T first(vec<T, N> x) { return x[0] * T(N); }
//! body
return float4(first(v.v12), first(v.v1234), first(int3(v.i3)), 0);
//! gives 2 4 9 0
//! case MatrixShapeIsDeduced
template <typename T, int C, int R> T corner(matrix<T, C, R> m) { return m[C - 1][R - 1] * T(C * 10 + R); }
//! body
float2x3 m = float2x3(float3(1, 2, 3), float3(4, 5, 6) * v.one); return float4(corner(m));
//! gives 138 138 138 138
//! case ExplicitSpecialisationOfAFunction
template <typename T> float kind(T) { return 1; }
template <> float kind<int>(int) { return 2; }
template <> float kind(uint) { return 3; }
//! body
return float4(kind(v.one), kind(v.i3), kind(v.u5), kind<int>(7));
//! gives 1 2 3 2
//! case NonTemplateWins
template <typename T> float f(T) { return 1; }
float f(float) { return 2; }
//! body
return float4(f(v.one), f(v.i3), f(half(1)), f<float>(v.one));
//! gives 2 1 1 1
//! case DefaultTemplateArguments
template <typename T = float, int N = 3> T make() { return T(N); }
template <typename T, typename U = T> U half_of(T x) { return U(x) / 2; }
//! body
return float4(make(), make<int>(), make<float, 7>(), half_of<int, float>(v.i3));
//! gives 3 3 7 1.5
//! case StructTemplate
template <typename T> struct Pair { T a; T b; T sum() const { return a + b; } };
//! body
Pair<float> p = {v.one, v.two}; Pair<int> q{v.i3, 4}; return float4(p.sum(), q.sum(), p.a, sizeof(Pair<float3>));
//! gives 3 7 1 32
//! case StructTemplateWithNumber
template <typename T, int N> struct Ring { T items[N]; T get(int i) const { return items[i % N]; } static constexpr constant int count = N; };
//! body
Ring<float, 3> r; for (int i = 0; i < 3; i++) r.items[i] = i * v.two; return float4(r.get(4), r.get(5), Ring<float, 3>::count, Ring<int, 9>::count);
//! gives 2 4 3 9
//! case StructTemplateConstructors
template <typename T> struct Box { T x; Box(T y) : x(y) {} Box() : x(T(9)) {} Box<T> grown(T by) const { return Box<T>(x + by); } Box same() const { return Box(x); } };
//! body
Box<float> b(v.two); Box<int> c; return float4(b.x, c.x, b.grown(3).x, b.same().x);
//! gives 2 9 5 2
//! case PartialSpecialisation
template <typename T> struct Kind { static constexpr constant int value = 1; };
template <typename T, int N> struct Kind<vec<T, N>> { static constexpr constant int value = 10 * N; };
template <> struct Kind<int> { static constexpr constant int value = 2; };
template <typename T> struct Kind<thread T*> { static constexpr constant int value = 3; };
//! body
return float4(Kind<float>::value, Kind<float3>::value, Kind<int>::value, Kind<thread int*>::value);
//! gives 1 30 2 3
//! case SpecialisationByNumber
template <int N> struct Fact { static constexpr constant int value = N * Fact<N - 1>::value; };
template <> struct Fact<0> { static constexpr constant int value = 1; };
//! body
return float4(Fact<5>::value, Fact<3>::value, Fact<0>::value, 0);
//! gives 120 6 1 0
//! case MemberTypesOfTemplates
template <typename T> struct Traits { typedef T type; using pair = vec<T, 2>; };
template <typename T> typename Traits<T>::pair both(T x) { typename Traits<T>::pair p = typename Traits<T>::pair(x, x * 2); return p; }
//! body
Traits<float>::type f = v.two; return float4(both(f), both(v.i3).y, 0);
//! gives 2 4 6 0
//! case StructTemplateIsDeducedAsAnArgument
template <typename T, int N> struct Buf { T d[N]; };
template <typename T, int N> T total(thread const Buf<T, N>& b) { T s = 0; for (int i = 0; i < N; i++) s += b.d[i]; return s * N; }
//! body
Buf<float, 3> b = {{1, 2, v.two}}; Buf<int, 2> c = {{v.i3, 4}}; return float4(total(b), total(c), 0, 0);
//! gives 15 14 0 0
//! case AliasTemplate
template <typename T> using V3 = vec<T, 3>; template <int N> using Floats = array<float, N>;
//! body
V3<float> a = V3<float>(1, v.two, 3); Floats<2> b = {5, v.two}; return float4(a.yz, b[0], b[1]);
//! gives 2 3 5 2
//! case VariableTemplate
template <typename T> constant T kPi = T(3.25); template <int N> constexpr constant int kDouble = N * 2;
//! body
return float4(kPi<float>, kPi<int>, kDouble<21>, 0);
//! gives 3.25 3 42 0
//! case TemplatesCallEachOther
template <typename T> T sq(T x) { return x * x; }
template <typename T> T quad(T x) { return sq(sq(x)); }
//! body
return float4(quad(v.two), quad(v.i3), quad(v.v12));
//! gives 16 81 1 16
//! case TemplatesSeeTheirOwnNamespace
namespace lib { float helper(float x) { return x * 10; } template <typename T> T use(T x) { return helper(x) + 1; } template <typename T> struct S { T x; T go() const { return helper(x); } }; }
float helper(float x) { return -1; }
//! body
lib::S<float> s{v.two}; return float4(lib::use(v.two), s.go(), 0, 0);
//! gives 21 20 0 0
//! case TemplatesOfReferencesToAnySpace
template <typename T> void bump(thread T& x, T by) { x += by; }
template <typename T> T read(constant T& x) { return x; }
//! body
float a = v.one; bump(a, 3.0f); int n = 1; bump(n, v.i3); return float4(a, n, read(v.two), read(v.v12).y);
//! gives 4 4 2 2
//! case EnableIfChoosesByType
template <typename T, typename = enable_if_t<is_floating_point<T>::value>> float kind(T) { return 1; }
template <typename T, typename = enable_if_t<is_integral<T>::value>, typename = void> float kind(T) { return 2; }
//! body
return float4(kind(v.one), kind(v.i3), kind(half(1)), kind(v.u5));
//! gives 1 2 1 2
//! case TypeTraits
template <typename T> constexpr float code() { return is_same<T, float>::value ? 1 : is_same_v<T, int> ? 2 : 3; }
//! body
return float4(code<float>(), code<int>(), code<half>(), is_floating_point_v<half> && !is_integral_v<float>);
//! gives 1 2 3 1
//! case ConditionalAndRemoveQualifiers
//! body
conditional_t<true, float, int> a = 2.5; conditional<false, float, int>::type b = 2; return float4(a, b, is_same<remove_cv_t<const float>, float>::value, is_same<make_unsigned_t<int>, uint>::value);
//! gives 2.5 2 1 1
//! case NumericLimits
//! body
return float4(numeric_limits<int>::max() == INT_MAX, numeric_limits<float>::max() > 3.4e38f, numeric_limits<uint>::min(), isinf(numeric_limits<float>::infinity()));
//! gives 1 1 0 1
//! case UnsafeArrayOfTranslators
template <typename T, size_t Num>
struct spvUnsafeArray
{
    T elements[Num ? Num : 1];

    thread T& operator [] (size_t pos) thread
    {
        return elements[pos];
    }
    constexpr const thread T& operator [] (size_t pos) const thread
    {
        return elements[pos];
    }

    device T& operator [] (size_t pos) device
    {
        return elements[pos];
    }
    constexpr const device T& operator [] (size_t pos) const device
    {
        return elements[pos];
    }

    constexpr const constant T& operator [] (size_t pos) const constant
    {
        return elements[pos];
    }

    threadgroup T& operator [] (size_t pos) threadgroup
    {
        return elements[pos];
    }
    constexpr const threadgroup T& operator [] (size_t pos) const threadgroup
    {
        return elements[pos];
    }
};
constant spvUnsafeArray<float, 4> kTable = spvUnsafeArray<float, 4>({ 1.0, 2.0, 4.0, 8.0 });
struct Lights { spvUnsafeArray<float2, 2> at; };
//! body
spvUnsafeArray<float, 4> a = spvUnsafeArray<float, 4>({ 1.0, v.two, 3.0, 4.0 });
spvUnsafeArray<spvUnsafeArray<int, 2>, 2> m; m[0][1] = v.i3; m[1][0] = 5; a[v.i3] += m[0][1];
Lights l; l.at[1] = v.v12; l.at[1].y = 9; spvUnsafeArray<float, 4> b = a; b[0] = 7;
return float4(a[3] + b[0], kTable[v.i3], l.at[v.i3 - 2].y, m[v.i3 - 2][0] + a[0]);
//! gives 14 8 9 6
//! case RecursiveInstancesAreBounded
template <int N> struct Deep { static constexpr constant int value = Deep<N + 1>::value; };
//! body
return float4(Deep<0>::value);
//! refused templates need more than
//! case ArgumentsThatDoNotFit
template <typename T> struct Box { T x; };
//! body
Box<3> b; return float4(0);
//! refused these are not the arguments that the template 'Box' takes
//! case TemplateOperators
template <typename T> struct W { T x; };
template <typename T> W<T> operator+(W<T> a, W<T> b) { return W<T>{a.x + b.x}; }
template <typename T> W<T> operator*(W<T> a, T s) { return {a.x * s}; }
//! body
W<float> a{v.two}; W<float> b = (a + a) * 3.0f; return float4(b.x);
//! gives 12 12 12 12
//! case TemplatesWithFunctors
struct Add { float operator()(float a, float b) const { return a + b; } };
struct Mul { float operator()(float a, float b) const { return a * b; } };
template <typename F> float apply(F f, float a, float b) { return f(a, b); }
template <typename F> float reduce(float4 x) { F f; return f(f(x.x, x.y), f(x.z, x.w)); }
//! body
return float4(apply(Add(), v.two, 3), apply(Mul{}, v.two, 3), reduce<Add>(v.v1234), reduce<Mul>(v.v1234));
//! gives 5 6 10 24
//! case StaticMemberTemplatesOfInstances
template <uint N> struct Unroll { template <typename F> static void run(thread F& f) { Unroll<N - 1>::run(f); f(N - 1); } };
template <> struct Unroll<0> { template <typename F> static void run(thread F& f) {} };
struct Summer { float4 v; float total = 0; void operator()(uint i) { total = total * 10 + v[i]; } };
//! body
Summer s{v.v1234}; Unroll<3>::run(s); return s.total;
//! gives 123 123 123 123
