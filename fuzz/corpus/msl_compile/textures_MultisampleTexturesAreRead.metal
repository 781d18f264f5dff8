#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d_ms<float> t [[texture(0)]], texture2d_ms_array<float> a [[texture(1)]]) {
return t.read(uint2(1, 2), uint(v.i3)) + float4(t.get_num_samples(), a.read(uint2(0), 1, 2).y, t.get_width(), a.get_array_size());

}
