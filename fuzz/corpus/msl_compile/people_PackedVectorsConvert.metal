#include <metal_stdlib>
using namespace metal;
struct P { packed_float3 a; packed_half2 b; packed_int3 c; };
float3 twice(float3 x) { return x * 2; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p; p.a = float3(1, v.two, 3); p.b = packed_half2(4, 5); p.c = packed_int3(6); p.a.xy = float2(7, 8); p.a[2] += 1; float3 q = twice(p.a); packed_float4 r(q, 1); return float4(q.z, p.b.y, p.c.z, r.y + dot(float3(p.a), float3(1)));

}
