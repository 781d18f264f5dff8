#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> t [[texture(0)]]) {
constexpr sampler a(address::clamp_to_border, border_color::opaque_white), b(address::clamp_to_border, border_color::opaque_black); return float4(t.sample(a, float2(-1)).xw, t.sample(b, float2(-1)).xw);

}
