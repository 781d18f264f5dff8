#include <metal_stdlib>
using namespace metal;
struct Ctx { texture2d<float> t; float k; };
Ctx make(texture2d<float> t, float k) { Ctx c; c.t = t; c.k = k; return c; }
Ctx twice(Ctx c) { c.k *= 2; return c; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> tex [[texture(0)]]) {
Ctx c = twice(make(tex, v.two)); return float4(c.k, c.t.get_height(), make(tex, 9).k, 0);

}
