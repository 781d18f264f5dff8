#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
uint4 a = as_type<uint4>(v.v1234); float2 b = as_type<float2>(ulong(0x40000000) << 32 | 0x3F800000ul); short4 c = as_type<short4>(uint2(0xFFFF0001u, 5)); char d = as_type<char>(uchar(255)); return float4(a.y == 0x40000000u, b.y, c.y, d);

}
