enum class K { a = 4, b }; typedef struct { float x; float2 y[2]; } T;
namespace n { constant float k[2] = {1.0, 2.0}; struct S { float a = 4; float f() const { return a; } S(float b) : a(b) {} }; }
#if defined(K) || (3 > 2 && !0)
float g(thread const float* p, int i) { return p[i]; }
#endif
fragment float4 f_main(float4 p [[position]]) { T t = {1, {2, 3}}; n::S s(2); float3x3 m(2); int i = int(p.x) % 2; m[i].xy += 1; ulong l = 1ul << 40; t.y[i] = m[i].xy; float q[2] = {1, 2}; auto z = (K::a == K::b) ? s.f() : n::k[i]; return float4(t.y[1], z, g(q, i) + float(l >> 38)); }
