#include <metal_stdlib>
using namespace metal;
float4 at(array<texture2d<float>, 2> t, int i) { return i == 0 ? t[0].read(uint2(1)) : t[1].read(uint2(2)); }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , array<texture2d<float>, 2> tex [[texture(1)]]) {
return at(tex, v.i3) + tex[0].read(uint2(3, 0));

}
