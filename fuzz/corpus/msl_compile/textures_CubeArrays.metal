#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texturecube_array<float> t [[texture(0)]]) {
constexpr sampler s(filter::nearest); float4 a = t.sample(s, float3(0, 1, 0), 1); return float4(floor(a.z / 16), t.get_array_size(), 0, 0);

}
