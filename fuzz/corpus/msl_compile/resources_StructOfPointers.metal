#include <metal_stdlib>
using namespace metal;
struct Ctx { constant float* data; int count; };
float sum(Ctx c) { float s = 0; for (int i = 0; i < c.count; i++) s += c.data[i]; return s; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant float* data [[buffer(1)]]) {
Ctx c; c.data = data + 2; c.count = v.i3; return float4(sum(c), *c.data, c.data[1], 0);

}
