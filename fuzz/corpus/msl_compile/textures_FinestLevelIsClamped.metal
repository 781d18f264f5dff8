#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> t [[texture(0)]]) {
constexpr sampler s(filter::nearest, mip_filter::nearest); return float4(t.sample(s, fragCoord.xy / 4, min_lod_clamp(1)).w, t.sample(s, fragCoord.xy / 4).w, t.sample(s, fragCoord.xy / 4, bias(1), min_lod_clamp(0)).w, t.calculate_clamped_lod(s, fragCoord.xy));

}
