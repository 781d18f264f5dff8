#include <metal_stdlib>
using namespace metal;
constant half kH [[function_constant(2)]]; constant ushort kS [[function_constant(6)]];
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(kH, kS, kS / 7, 0);

}
