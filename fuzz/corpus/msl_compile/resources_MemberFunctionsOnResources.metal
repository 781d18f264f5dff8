#include <metal_stdlib>
using namespace metal;
struct Shader { texture2d<float> channel; float time; float4 image(float2 at) { return look(at) + time; }
  float4 look(float2 at) { constexpr sampler s(filter::nearest, address::repeat); return channel.sample(s, at); } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> tex [[texture(0)]]) {
Shader s{tex, v.two}; s.time += 1; return s.image(float2(1.375, 0.1));

}
