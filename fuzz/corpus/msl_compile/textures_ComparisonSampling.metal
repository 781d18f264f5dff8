#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , depth2d<float> d [[texture(0)]]) {
constexpr sampler s(compare_func::less, filter::nearest); constexpr sampler g(coord::normalized, compare_func::greater_equal); float2 at = float2(0.9); return float4(d.sample_compare(s, at, 0.1), d.sample_compare(s, at, 0.2), d.sample_compare(g, at, 0.2), d.sample_compare(s, at, 0.1, level(0)));

}
