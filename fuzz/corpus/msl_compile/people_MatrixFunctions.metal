#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float3x3 m = float3x3(float3(2, 0, 0), float3(0, 3, 0), float3(1, 0, v.i3 + 1)); half2x2 h = half2x2(1, 2, 3, 4); return float4(determinant(m), transpose(m)[0].z, float(determinant(h)), transpose(float2x4(float4(1), float4(2)))[3].y);

}
