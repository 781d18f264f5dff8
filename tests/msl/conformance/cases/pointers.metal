//! each Locals
float a = v.one; thread float* p = &a; *p += 2; p[0] *= 2; return float4(a, *p, 0, 0); //=> 6 6 0 0
float a[4] = {1, 2, 3, 4}; thread float* p = a; p += 1; *p = v.two * 10; ++p; return float4(a[1], *p, *(p + 1), p[-2]); //=> 20 3 4 1
float a[4] = {1, 2, 3, 4}; thread float* p = &a[3]; p--; return float4(*p, *p--, *p, *++p) * v.one; //=> 3 3 2 3
float a = 1, b = 2; thread float* p = v.one > 0 ? &a : &b; *p = 9; return float4(a, b, *p, 0); //=> 9 2 9 0
float a[2] = {1, 2}, b[2] = {3, 4}; thread float* p = v.two > 5 ? a : b; p[1] += 10; return float4(a[1], b[1], p[0], 0); //=> 2 14 3 0
float4 q = v.v1234; thread float4* p = &q; p->x = 7; (*p).yz = p->zy; return q; //=> 7 3 2 4
float a = v.one; thread float& r = a; r += 4; const thread float& c = r; return float4(a, r, c, 0); //=> 5 5 5 0
int a[2][3] = {{1, 2, 3}, {4, 5, 6}}; thread int* p = a[1]; p[v.i3 - 1] = 9; return float4(a[1][2], a[0][1], p[0], sizeof(a) / 4); //=> 9 2 4 6
float3 x = v.v1234.xyz; thread float3& r = x; r.y = 8; r[2] = 9; return float4(x, r.x); //=> 1 8 9 1
//! case ReferencesFromSeveralReturns
struct P { float a, b; thread float& pick(bool first) thread { if (first) return a; return b; } };
thread float& larger(thread float& x, thread float& y) { if (x > y) { return x; } else { return y; } }
//! body
P p{1, 2}; p.pick(v.one > 0) = 5; p.pick(v.one > 5) += 10; float a = v.one, b = v.two; larger(a, b) = 20; return float4(p.a, p.b, a, b);
//! gives 5 12 1 20
//! case ConstantPointersAreChosen
//! parameters , constant float* a [[buffer(1)]], constant float4* b [[buffer(4)]]
//! body
constant float* p = v.one > 0 ? a + 4 : a; constant float* q = v.two > 5 ? p : &a[10]; return float4(p[1], *q, q[v.i3], (v.zero > 0 ? a : q)[1]);
//! gives 5 10 13 11
//! case PointersAreHandedOn
void fill(thread float* p, int n) { for (int i = 0; i < n; ++i) p[i] = i * 2; } float last(const thread float* p, int n) { return *(p + n - 1); } void both(thread float* p) { fill(p + 1, 2); }
//! body
float a[4] = {9, 9, 9, 9}; both(a); return float4(a[0], a[2], last(a, 3), a[3] * v.one);
//! gives 9 2 2 9
//! case ArraysByReference
float sum(thread const float (&a)[3]) { return a[0] + a[1] + a[2]; } void twice(thread float (&a)[3]) { for (thread float& x : a) x *= 2; }
template <typename T, int N> T total(thread T (&a)[N]) { T s = 0; for (int i = 0; i < N; i++) s += a[i]; return s; }
//! body
float a[3] = {1, v.two, 3}; twice(a); int b[4] = {1, 2, 3, 4}; return float4(sum(a), total(a), total(b), 0);
//! gives 12 12 10 0
//! case StructsByPointerAndReference
struct S { float a; float3 b; }; void set(thread S* s, float x) { s->a = x; s->b.y = x * 2; } void add(thread S& s) { s.a += 1; s.b += s.a; }
//! body
S s = {}; set(&s, v.two); add(s); return float4(s.a, s.b);
//! gives 3 3 7 3
//! case PointersToStructsInBuffers
struct Item { float2 at; float weight; float pad; };
//! parameters , const device Item* items [[buffer(1)]]
//! body
const device Item* p = items + 1; const device Item& q = p[v.i3 - 2]; return float4(p->weight, (*p).at.y, q.weight, (p + 1)->at.x);
//! gives 6 5 10 8
//! case PointersWalk
float sum(constant float* p, int n) { float s = 0; while (n-- > 0) s += *p++; return s; } float last(const thread float* p, int n) { p += n - 1; return *p; } float second(constant float* p) { ++p; return *p; }
void fill(thread float* p, int n, float x) { for (int i = 0; i < n; ++i, ++p) *p = x + i; }
//! parameters , constant float* data [[buffer(1)]]
//! body
float a[4]; fill(a, 4, v.two); constant float* q = data; q += v.i3; float t = *q; q -= 1; return float4(sum(data + 2, 3), last(a, 4), t * 10 + *q, second(data));
//! gives 9 5 32 1
//! case PointersOfEntryPointsWalk
//! parameters , constant float* data [[buffer(1)]]
//! body
float s = 0; for (int i = 0; i < 3; i++) { s += *data; data += 2; } if (v.one > 0) data++; return float4(s, *data, data[1], *(data - 1));
//! gives 6 7 8 6
//! case PointersAreNotCompared
//! body
float a[4]; thread float* p = a; thread float* e = a + 4; while (p != e) *p++ = 1; return a[3];
//! refused '!=' does not apply to 'thread float*' and 'thread float*'
