#include <metal_stdlib>
using namespace metal;
float f(float a) { return 1; } float f(float a, float b) { return 2; } float f(float2 a, float b) { return 3; } float f(float3 a) { return 4; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(f(v.one), f(v.one, 2), f(v.v12, 1), f(float3(1)));

}
