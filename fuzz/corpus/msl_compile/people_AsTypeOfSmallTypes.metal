#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
half2 h = half2(1, 2); uint b = as_type<uint>(h); half2 back = as_type<half2>(b + 0u * v.u5); ushort s = as_type<ushort>(half(1.0)); uchar4 c = as_type<uchar4>(0x04030201u + 0u * v.u5); return float4(b == 0x40003C00u, back.y, s == 0x3C00, c.w);

}
