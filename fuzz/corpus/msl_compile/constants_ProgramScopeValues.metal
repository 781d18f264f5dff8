#include <metal_stdlib>
using namespace metal;
constant float kPi = 3.25; constant float3 kAxis = float3(0, 1, 2); constant int kTable[2][3] = {{1, 2, 3}, {4, 5, 6}}; constexpr constant float kTwice = kPi * 2; const constant float kOld = 1;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(kTwice, kAxis.z, kTable[v.i3 - 2][v.i3 - 1], kOld);

}
