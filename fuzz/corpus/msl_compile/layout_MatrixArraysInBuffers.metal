#include <metal_stdlib>
using namespace metal;
struct P { float4x4 m[2]; float3x2 n[2]; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant P& p [[buffer(1)]]) {
int i = v.i3 - 2; return float4(p.m[i][2].w, p.n[i][0].y, (p.m[0] * float4(1, 0, 0, 0)).w, p.n[0][i + 1].x);

}
