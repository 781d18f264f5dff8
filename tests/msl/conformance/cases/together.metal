//! case PointersMoveInsideBranchesAndLoops
//! parameters , constant float* data [[buffer(1)]]
//! body
constant float* p = data; float s = 0; for (int i = 0; i < 4; i++) { if (i % 2 == 0) p += 2; else ++p; s = s * 10 + *p; } constant float* q = p; q--; return float4(s, *p, *q, *(q + 3));
//! gives 2356 6 5 8
//! case PointersMoveInSwitches
//! body
float a[6] = {0, 1, 2, 3, 4, 5}; thread float* p = a; switch (v.i3) { case 1: p += 5; break; case 3: p += 2; default: p++; } *p *= 10; return float4(a[3], *p, p[1], *(p - 1));
//! gives 30 30 4 2
//! case UnionsOfStructsInBothBranches
struct Parts { ushort lo, hi; }; union W { uint u; Parts p; uchar b[4]; };
W make(uint x, bool swap) { W w; w.u = x; if (swap) { ushort t = w.p.lo; w.p.lo = w.p.hi; w.p.hi = t; } else { w.b[0] ^= 0xFF; } return w; }
//! body
W a = make(0x00020001u, v.one > 0), b = make(0x00020001u, v.one > 5); uint s = 0; for (uint i = 0; i < 4; i++) s += b.b[i] * (i + 1); return float4(a.p.lo, a.p.hi, b.b[0], s);
//! gives 2 1 254 260
//! case ChosenStructsGoThroughFunctions
struct Layer { texture2d<float> t; float weight; }; float4 at(Layer l, uint2 p) { return l.t.read(p) * l.weight; } float4 both(thread const Layer (&l)[2], int i, uint2 p) { return at(l[i], p) + at(l[1 - i], p); }
//! parameters , texture2d<float> a [[texture(0)]], texture2d<float> b [[texture(1)]]
//! body
Layer l[2] = {{a, 2}, {b, v.two + 1}}; float4 r = both(l, v.i3 - 2, uint2(1, 1)); r.w += at(v.one > 0 ? l[1] : l[0], uint2(0)).w; return r;
//! gives 5 5 25 8
//! case ChosenTexturesInsideLoopsThatEndEarly
//! parameters , array<texture2d<float>, 4> t [[texture(0)]]
//! body
float4 s = 0; for (int i = 0; i < 4; i++) { float4 c = t[i].read(uint2(i, 0)); if (c.x > 1) { s += c * 10; break; } s += c; } return s;
//! gives 21 0 21 12
//! case BasesUnionsAndPacksTogether
struct Base { union { float f; uint u; }; float get() const { return f; } }; template <typename... Ts> struct Sum : Base { float sum(Ts... xs) const { float a[] = {float(xs)...}; float s = f; for (float x : a) s += x; return s; } };
//! body
Sum<int, float, half> s; s.u = 0x3F800000u + 0u * v.u5; return float4(s.sum(1, v.two, 3.0h), s.get(), sizeof(s), s.f);
//! gives 7 1 4 1
//! case ReferencesToChosenPlacesAreWrittenInLoops
struct Pair { float a, b; thread float& at(int i) thread { if (i == 0) { return a; } return b; } };
//! body
Pair p{0, 0}; for (int i = 0; i < 5; i++) { p.at(i & 1) += i; p.at(0) *= 2; } thread float& r = p.at(v.i3 - 2); r = r + 100; return float4(p.a, p.b, r, 0);
//! gives 24 104 104 0
//! case ConstantFunctionsOfTemplatesSizeArrays
template <typename T> constexpr int lanes() { return sizeof(T) / sizeof(float); } template <int N> struct Ring { float a[N]; uint head = 0; void push(float x) { a[head++ % N] = x; } float sum() const { float s = 0; for (int i = 0; i < N; i++) s += a[i]; return s; } };
constexpr int fib(int n) { int a = 0, b = 1; while (n-- > 0) { int t = a + b; a = b; b = t; } return a; }
//! body
Ring<lanes<float3>()> r; Ring<fib(6)> q; for (int i = 0; i < 6; i++) r.push(i); for (int i = 0; i < 8; i++) q.push(v.two); return float4(r.sum(), q.sum(), sizeof(q), fib(10));
//! gives 14 16 36 55
//! case OperatorsReturnReferencesThatAreChained
struct S { float v; thread S& operator<<(float x) thread { v = v * 10 + x; return *this; } thread S& operator+=(thread const S& o) thread { v += o.v; return *this; } float operator[](int i) const { return v + i; } };
//! body
S s{0}; s << 1 << v.two << 3; S t{7}; (t += s) += t; return float4(s.v, t.v, s[2], (t << 1).v);
//! gives 123 260 125 2601
//! case GroupsInsideFunctions
float spread(float x) { float lo = quad_min(x), hi = quad_max(x); return hi - lo; } template <typename T> T total(T x) { return quad_sum(x); }
//! body
return float4(spread(fragCoord.x), spread(fragCoord.y), total(v.v12).y, total(v.i3));
//! gives 1 1 8 12
