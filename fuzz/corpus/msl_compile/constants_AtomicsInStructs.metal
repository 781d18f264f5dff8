#include <metal_stdlib>
using namespace metal;
struct S { float a; atomic_uint n; atomic<int> m; half h; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , device S& s [[buffer(4)]]) {
atomic_exchange_explicit(&s.n, 4u, memory_order_relaxed); atomic_fetch_min_explicit(&s.m, -3, memory_order_relaxed); uint e = 4; bool same = atomic_compare_exchange_weak_explicit(&s.n, &e, 4u, memory_order_relaxed, memory_order_relaxed);
return float4(atomic_load_explicit(&s.n, memory_order_relaxed), atomic_load_explicit(&s.m, memory_order_relaxed), same, e);

}
