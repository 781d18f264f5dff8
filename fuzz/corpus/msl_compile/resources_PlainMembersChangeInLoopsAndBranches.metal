#include <metal_stdlib>
using namespace metal;
struct Ctx { texture2d<float> t; float sum; int n[2]; };
void add(thread Ctx& c, float x) { if (x > 1) c.sum += x; else c.sum += 10; c.n[1] += 1; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> tex [[texture(0)]]) {
Ctx c = {tex, 0, {0, 0}}; for (int i = 0; i < 4; i++) add(c, i); return float4(c.sum, c.n[1], c.t.get_width(), 0);

}
