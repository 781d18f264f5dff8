#include <metal_stdlib>
using namespace metal;
constant float3x3 kM = float3x3(float3(1, 2, 3), float3(4, 5, 6), float3(7, 8, 9)); constant float2x2 kId = float2x2(1);
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4((kM * float3(1, 0, 1)).y, kM[1][2], (kId * v.v12));

}
