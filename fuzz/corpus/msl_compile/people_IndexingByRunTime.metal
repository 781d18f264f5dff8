#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float4 a = v.v1234; int i = v.i3; uint j = v.u5 - 4u; a[j] = 10; a.zw[j] = 20; float3x3 m(1); m[j] = float3(4, 5, 6); m[i - 1][j] = 7; return float4(a[i], a[j], m[j][i - 1], m[2][1]);

}
