#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> t [[texture(0)]], texture3d<float> d [[texture(1)]]) {
constexpr sampler s(filter::nearest, mip_filter::nearest); return float4(t.sample(s, float2(0.5), bias(1)).w, t.sample(s, float2(0.5), gradient2d(float2(0.5, 0), float2(0, 0.5))).w, d.sample(s, float3(0.5), gradient3d(float3(0), float3(0))).w, t.sample(s, fragCoord.xy / 4, bias(2.0)).w);

}
