#include <metal_stdlib>
using namespace metal;
constant float kRoot = sqrt(16.0); constant float3 kN = normalize(float3(0, 3, 4)); static constant float kLocal = max(1.0, 2.0);
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(kRoot, kN.yz, kLocal);

}
