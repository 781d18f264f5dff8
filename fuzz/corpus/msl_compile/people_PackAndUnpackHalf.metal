#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
half4 a = unpack_unorm4x8_to_half(0xFF0080FFu); uint b = pack_half_to_unorm4x8(half4(1, 0, 1, 0)); uint c = pack_float_to_unorm2x16(float2(1, 0)); half2 d = unpack_snorm2x16_to_half(0x80017FFFu); return float4(a.x, b == 0x00FF00FFu, c == 0xFFFFu, d.x + d.y);

}
