#include <metal_stdlib>
using namespace metal;
struct Shader { texture2d<float> channel; thread float& acc; Shader(texture2d<float> t, thread float& a) : channel(t), acc(a) {} void go() { acc += channel.get_width(); } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> tex [[texture(0)]]) {
float x = v.one; Shader s(tex, x); s.go(); s.go(); return float4(x);

}
