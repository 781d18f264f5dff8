#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texturecube<float> t [[texture(0)]]) {
constexpr sampler s(filter::nearest); float4 px = t.sample(s, float3(1, 0.25, 0.25)); float4 nz = t.sample(s, float3(0.25, 0.25, -1)); return float4(floor(px.z / 16), floor(nz.z / 16), t.sample(s, float3(0, -1, 0), level(0)).w, t.get_width());

}
