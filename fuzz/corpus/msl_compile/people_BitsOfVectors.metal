#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
int3 a = extract_bits(int3(0xF0, 0x70, -1) + v.i3 - 3, 4, 4); uint2 b = insert_bits(uint2(0), uint2(3), 4, 2); uint2 c = rotate(uint2(1), uint2(31, 4)); return float4(a.x, a.y, b.y, c.y);

}
