#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , depth2d<float> d [[texture(0)]], depth2d_array<float> a [[texture(1)]], depthcube<float> c [[texture(2)]]) {
constexpr sampler s(filter::nearest); float x = d.sample(s, float2(0.9)); return float4(x * 128, d.read(uint2(1, 2)) * 128, a.sample(s, float2(0.1), 2) * 128, floor(c.sample(s, float3(0, 1, 0)) * 8));

}
