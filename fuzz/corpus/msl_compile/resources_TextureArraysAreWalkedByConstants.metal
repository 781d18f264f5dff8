#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , array<texture2d<float>, 3> tex [[texture(0)]]) {
float4 s = 0; s += tex[0].read(uint2(1)); s += tex[1].read(uint2(1)); s += tex[2].read(uint2(1)); return s;

}
