#include <metal_stdlib>
using namespace metal;
struct Ctx { texture2d<float> t; sampler s; float n; };
void fill(thread Ctx& c, texture2d<float> t, sampler s) { c.t = t; c.s = s; c.n = 2; }
float4 look(thread const Ctx& c) { return c.t.sample(c.s, float2(0.1)) * c.n; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> tex [[texture(2)]], sampler smp [[sampler(1)]]) {
Ctx c; fill(c, tex, smp); return look(c);

}
