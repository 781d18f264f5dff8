#include <metal_stdlib>
using namespace metal;
struct Ctx { texture2d<float> t; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> a [[texture(0)]], texture2d<float> b [[texture(1)]]) {
Ctx c = {a}; if (v.one > 0) c.t = b; return c.t.read(uint2(0));

}
