#include <metal_stdlib>
using namespace metal;
constexpr sampler kNear(filter::nearest, address::repeat);
constant constexpr sampler kOther = sampler(filter::linear);
float4 look(texture2d<float> t, sampler s) { return t.sample(s, float2(1.375, 0.125)); }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> t [[texture(0)]]) {
return look(t, kNear) + look(t, kOther).y;

}
