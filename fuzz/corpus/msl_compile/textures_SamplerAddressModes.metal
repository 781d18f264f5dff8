#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> t [[texture(0)]]) {
constexpr sampler a(address::repeat), b(address::mirrored_repeat), c(s_address::clamp_to_edge, t_address::repeat), d(address::clamp_to_zero); return float4(t.sample(a, float2(1.3, 0)).x, t.sample(b, float2(1.1, 0)).x, t.sample(c, float2(2, 1.3)).z, t.sample(d, float2(1.5)).w);

}
