#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d_array<float> t [[texture(0)]]) {
constexpr sampler s(filter::nearest); return float4(t.sample(s, float2(0.375, 0.625), 2).z, t.read(uint2(1, 2), 1).z, t.get_array_size(), t.sample(s, float2(0.1), uint(v.i3 - 2), level(0)).z);

}
