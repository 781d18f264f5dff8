#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture1d<float> t [[texture(0)]], texture1d_array<float> a [[texture(1)]]) {
constexpr sampler s(filter::nearest); return float4(t.read(uint(v.i3)).x, t.sample(s, 0.625).x, a.sample(s, 0.375, 2).z, a.read(1u, 1u).z);

}
