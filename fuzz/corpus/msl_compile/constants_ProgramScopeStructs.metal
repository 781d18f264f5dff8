#include <metal_stdlib>
using namespace metal;
struct Light { float3 at; float power; }; constant Light kLights[2] = {{float3(1), 2}, {.at = float3(3, 4, 5), .power = 6}}; constant Light kOne = {float3(7), 8};
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
int i = v.i3 - 2; return float4(kLights[i].at.y, kLights[i].power, kLights[0].power, kOne.at.x + kOne.power);

}
