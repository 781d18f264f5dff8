#include <metal_stdlib>
using namespace metal;
struct Ctx { texture2d<float> t; sampler s; };
float4 look(Ctx c, float2 at) { return c.t.sample(c.s, at); }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> tex [[texture(0)]], sampler smp [[sampler(0)]]) {
Ctx c = {tex, smp}; return look(c, float2(0.375, 0.625));

}
