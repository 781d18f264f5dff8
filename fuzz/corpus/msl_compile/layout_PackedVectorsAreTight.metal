#include <metal_stdlib>
using namespace metal;
struct P { packed_float3 a; float b; packed_float2 c; packed_float3 d[2]; float4 e; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant P& p [[buffer(1)]]) {
int i = v.i3 - 2; return float4(p.a.z + p.b, p.c.y, p.d[i].x, p.e.x);

}
