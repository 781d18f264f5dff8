#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float2x3 a(float3(1, 2, 3), float3(4)); float3x3 b(1.0f); half2x2 c = half2x2(half2(1), half2(2, 3)); float4x4 d = float4x4(float4(1), float4(2), v.v1234, float4(4)); float2x2 e = {float2(1, 2), float2(3, 4)}; float2x2 f{e[0], e[1]}; return float4(a[1][2] + b[2][2], float(c[1].y), d[2].w, (e * f)[1].x);

}
