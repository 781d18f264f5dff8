#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , depth2d<float> d [[texture(0)]]) {
constexpr sampler s(compare_func::less, filter::linear), p(filter::linear); return float4(d.sample_compare(s, float2(0.5), 7.5 / 128), d.gather_compare(s, float2(0.5), 9.5 / 128).x, d.gather(p, float2(0.5)).w * 128, 0);

}
