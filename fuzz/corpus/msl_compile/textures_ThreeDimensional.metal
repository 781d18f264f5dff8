#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture3d<float> t [[texture(0)]]) {
constexpr sampler s(filter::nearest); return float4(t.read(uint3(1, 2, 3)).z, t.sample(s, float3(0.125, 0.375, 0.625)).z, t.get_depth(), t.get_width());

}
