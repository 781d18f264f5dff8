#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
half a = 1.5h; half b = 0.5H; half4 c = half4(a, b, 2.h, .25h); float x = 1.f + 2.F + 0.f; return float4(c) + x;

}
