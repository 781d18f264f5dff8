#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
half x = half(v.two); half3 y = half3(1, 2, 2); return float4(sqrt(x * 2), max(x, 1.0h), length(y), dot(y, y)) + float4(clamp(x, 0.0h, 1.0h), mix(x, 4.0h, 0.5h), saturate(x), pow(x, 2.0h));

}
