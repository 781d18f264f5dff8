#include <metal_stdlib>
using namespace metal;
struct P { float3x3 a; float2x2 b; float4x2 c; float a2; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant P& p [[buffer(1)]]) {
return float4(p.a[2].z, p.b[1].x, p.c[3].y, p.a2);

}
