//! case FunctionsGiveArrayLengths
constexpr int power(int b, int e) { return e == 0 ? 1 : b * power(b, e - 1); }
constant int kTable[power(2, 2)] = {1, 2, 3, 4};
//! body
float a[power(3, 2)]; return float4(sizeof(kTable) / sizeof(int), sizeof(a) / 4, kTable[v.i3], 0);
//! gives 4 9 4 0
//! case LoopsRunWhileCompiling
constexpr int sum(int n) { int s = 0; for (int i = 1; i <= n; ++i) { if (i % 2 == 0) continue; s += i; } return s; }
static_assert(sum(5) == 9, "odd numbers");
template <int N> int get() { return N; }
//! body
return float4(get<sum(7)>(), sum(9), 0, 0);
//! gives 16 25 0 0
//! case StructsAndArraysWhileCompiling
struct Range { int lo, hi; constexpr int size() const { return hi - lo; } };
constexpr int pick(int i) { int t[4] = {5, 6, 7, 8}; t[1] += 10; return t[i]; }
constexpr Range make(int a) { Range r = {a, a * 3}; r.lo -= 1; return r; }
//! body
int a[make(2).size()]; int b[pick(1)]; return float4(sizeof(a) / 4, sizeof(b) / 4, 0, 0);
//! gives 5 16 0 0
//! case SwitchesAndWhileLoops
constexpr int kind(int x) { switch (x) { case 1: return 10; case 2: case 3: x += 1; break; default: return 99; } return x; }
constexpr int bits(uint x) { int n = 0; while (x != 0) { n += x & 1; x >>= 1; } return n; }
constexpr int least(int x) { do { x /= 2; } while (x > 10); return x; }
enum { kA = kind(1), kB = kind(3), kC = kind(7), kD = bits(0xF0F), kE = least(100) };
//! body
return float4(kA, kB, kC, kD + kE);
//! gives 10 4 99 14
//! case VectorsWhileCompiling
constexpr int dot3(int3 a, int3 b) { int3 c = a * b; return c.x + c.y + c.z; }
//! body
int a[dot3(int3(1, 2, 3), int3(1).zyx * 2)]; return float4(sizeof(a) / 4, 0, 0, 0);
//! gives 12 0 0 0
//! case ReferencesWhileCompiling
constexpr void bump(thread int& x, int by) { x += by; } constexpr int twice(int x) { bump(x, x); return x; }
//! body
switch (v.i3 * 2) { case twice(3): return 1; } return 0;
//! gives 1 1 1 1
//! case ConstantTablesAreReadWhileCompiling
constant constexpr int kSizes[3] = {2, 4, 6};
template <int N> struct Room { float a[kSizes[N]]; };
//! body
constexpr int n = kSizes[1] + 1; int local[n]; return float4(sizeof(Room<2>) / 4, sizeof(local) / 4, 0, 0);
//! gives 6 5 0 0
//! case ConstructorsWhileCompiling
struct P { int a, b; constexpr P(int x) : a(x), b(x + 1) {} constexpr int area() const { return a * b; } };
static_assert(P(3).area() == 12, "area");
//! body
constexpr P p(2); return float4(p.area(), P(4).b, 0, 0);
//! gives 6 5 0 0
//! case FloatsWhileCompiling
constexpr float scaled(float x) { return x * 0.5f + 1.0f; } constexpr int asInt(float x) { return int(scaled(x)); }
//! body
int a[asInt(7)]; constexpr float f = scaled(3); return float4(sizeof(a) / 4, f, 0, 0);
//! gives 4 2.5 0 0
//! case EndlessLoopsAreGivenUp
constexpr int forever(int x) { while (true) x += 1; return x; }
//! body
int a[forever(1)]; return 0;
//! refused the length of an array must be an integer known when compiling
//! case RunTimeValuesAreNoConstants
int next(int x) { return x + 1; }
//! body
int a[next(v.i3)]; return 0;
//! refused the length of an array must be an integer known when compiling
//! case AssertionsSayWhatFailed
constexpr int two() { return 2; } static_assert(two() == 3, "two is not three");
//! body
return 0;
//! refused the assertion does not hold
