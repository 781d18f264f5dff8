#include <metal_stdlib>
using namespace metal;
float f(half x) { return 1; } float f(float x) { return 2; } float g(half3 x) { return 3; } float g(float3 x) { return 4; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(f(half(v.one)), f(v.one), g(half3(1)), g(float3(1)));

}
