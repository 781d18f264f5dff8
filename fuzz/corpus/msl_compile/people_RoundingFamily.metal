#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float x = v.half_ + v.two; return float4(round(x), rint(x), trunc(-x), ceil(-x)) + float4(floor(-x), fract(x), sign(-x), fabs(-x));

}
