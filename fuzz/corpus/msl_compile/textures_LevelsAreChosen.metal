#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> t [[texture(0)]]) {
constexpr sampler s(filter::nearest, mip_filter::nearest); return float4(t.sample(s, float2(0.75), level(1)).w, t.read(uint2(1), 1).w, t.get_num_mip_levels(), t.get_width(2) + t.get_height(1) * 10);

}
