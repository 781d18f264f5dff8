#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , device atomic_uint* c [[buffer(4)]], device atomic_int& d [[buffer(5)]]) {
uint a = atomic_fetch_add_explicit(&c[0], 0u, memory_order_relaxed); atomic_store_explicit(&c[1], 7u, memory_order_relaxed); atomic_fetch_max_explicit(&d, 5, memory_order_relaxed); atomic_fetch_or_explicit(c + 2, 6u, memory_order_relaxed);
return float4(a, atomic_load_explicit(&c[1], memory_order_relaxed), atomic_load_explicit(&d, memory_order_relaxed), atomic_fetch_and_explicit(&c[2], 15u, memory_order_relaxed));

}
