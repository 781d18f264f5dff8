#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , depthcube<float> c [[texture(0)]], depth2d_array<float> a [[texture(1)]]) {
constexpr sampler s(compare_func::less_equal); return float4(c.sample_compare(s, float3(0, 1, 0), 0.1), c.sample_compare(s, float3(1, 0, 0), 0.2), a.sample_compare(s, float2(0.1), 2, 0.2), a.sample_compare(s, float2(0.1), 0, 0.2, level(0)));

}
