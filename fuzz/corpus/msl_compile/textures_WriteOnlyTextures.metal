#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float, access::write> t [[texture(0)]], texture2d<uint, access::write> u [[texture(1)]], texture2d_array<half, access::write> h [[texture(2)]]) {
t.write(float4(1), uint2(1)); u.write(uint4(2), uint2(1)); h.write(half4(1), uint2(0), 2); return float4(t.get_width(), u.get_height(), h.get_array_size(), t.get_num_mip_levels());

}
