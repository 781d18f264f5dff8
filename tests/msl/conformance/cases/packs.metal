//! case ArgumentsOfAnyNumber
template <typename T> T total(T x) { return x; }
template <typename T, typename... Rest> T total(T x, Rest... rest) { return x + total(rest...); }
//! body
return float4(total(v.one), total(v.one, v.two), total(1, 2, v.i3), total(v.one, 1.0f, 1.0f, v.two));
//! gives 1 3 6 5
//! case SizesOfPacks
template <typename... Ts> constexpr uint count(Ts...) { return sizeof...(Ts); }
template <int... I> struct List { static constexpr constant uint size = sizeof...(I); };
//! body
return float4(count(), count(1, v.two, v.v12), List<>::size, List<4, 5, 6>::size);
//! gives 0 3 0 3
//! case PatternsAreExpanded
template <typename... Ts> float4 all_of(Ts... xs) { return float4((xs * 2)...); }
template <int... I> int sum() { int a[] = {I...}; int s = 0; for (int x : a) s += x; return s; }
//! body
float4 a = all_of(v.one, v.two, 3.0f, 4.0f); return float4(a.x, a.w, sum<1, 2, 3>(), sum<9>());
//! gives 2 8 6 9
//! case SequencesAreMade
template <int... I> struct Seq {};
template <int N, int... I> struct Make : Make<N - 1, N - 1, I...> {};
template <int... I> struct Make<0, I...> { typedef Seq<I...> type; };
template <int... I> int weigh(Seq<I...>) { int a[] = {I...}; return a[0] + a[1] * 10 + a[2] * 100; }
//! body
return float4(weigh(Make<3>::type()), weigh(Seq<4, 5, 6>()), 0, 0);
//! gives 210 654 0 0
//! case TuplesAreBuiltByInheritance
template <typename... Ts> struct Tuple {};
template <typename T, typename... Rest> struct Tuple<T, Rest...> : Tuple<Rest...> { T head; };
template <typename... Ts> constexpr int length(Tuple<Ts...>) { return sizeof...(Ts); }
//! body
Tuple<float, int> t; t.head = v.two; thread Tuple<int>& rest = t; rest.head = v.i3; return float4(t.head, rest.head, length(t), sizeof(Tuple<float, float>));
//! gives 2 3 2 8
//! case CallsAreHandedOn
struct Mul { float operator()(float a, float b) const { return a * b; } };
template <typename F, typename... Args> auto apply(F f, Args... args) -> decltype(f(args...)) { return f(args...); }
//! body
return float4(apply(Mul(), v.two, 5.0f), apply(Mul{}, 3.0f, v.two), 0, 0);
//! gives 10 6 0 0
//! case PacksAreNotValues
template <typename... Ts> float f(Ts... xs) { return xs; }
//! body
return f(v.one);
//! refused 'xs' is a parameter pack; '...' behind it expands it
//! case TrailingResults
auto both(float x) -> float2 { return float2(x, -x); }
template <typename A, typename B> auto add(A a, B b) -> decltype(a + b) { return a + b; }
//! body
return float4(both(v.two), add(v.i3, 0.5f), add(1, 2) / 2);
//! gives 2 -2 3.5 1
//! case DeducedResults
auto twice(float x) { return x * 2; } template <typename T> auto pair(T x) { return vec<T, 2>(x, x + 1); } auto nothing(thread float& x) { x = 7; }
struct S { float a; auto get() const { return a + 1; } };
//! body
float y; nothing(y); S s{v.two}; return float4(twice(v.two), pair(v.i3).y, y, s.get());
//! gives 4 4 7 3
//! case ExplicitInstantiations
template <typename T> T id(T x) { return x; } template float id<float>(float); template int id(int);
template <typename T> struct Box { T v; }; template struct Box<float4>;
//! body
Box<float4> b{v.v1234}; return id(b.v);
//! gives 1 2 3 4
//! case InstantiatedEntryPoints
template <int N> fragment float4 shade(float4 p [[position]]) { return float4(N); }
template [[host_name("f_main")]] fragment float4 shade<5>(float4 p [[position]]);
//! gives 5 5 5 5
//! case TheMoreSpecialTemplateWins
template <typename T> float f(T x) { return 1; } template <typename T, int N> float f(vec<T, N> x) { return 2; } template <typename T> float f(thread T* x) { return 3; }
//! body
float a = v.one; return float4(f(a), f(v.v12), f(&a), f(int3(1)));
//! gives 1 2 3 2
