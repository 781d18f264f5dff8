#include <metal_stdlib>
using namespace metal;
struct P { float3 a; float b; float3 c[2]; float2 d; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant P& p [[buffer(1)]]) {
return float4(p.a.z, p.b, p.c[v.i3 - 2].z, p.d.y);

}
