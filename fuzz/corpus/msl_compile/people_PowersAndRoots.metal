#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(powr(v.two, 3), cbrt(v.two * 4), hypot(v.one * 3, 4.0), exp10(v.two)) + float4(log10(v.one * 100), log2(v.two), rsqrt(v.two * 2), fmod(v.two * 3.5, 4));

}
