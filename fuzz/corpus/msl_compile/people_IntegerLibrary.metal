#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(abs(-v.i3), min(v.i3, -2), clamp(v.i3, 4, 9), max3(1, v.i3, 2)) + float4(popcount(ushort(0xFF)), clz(ushort(1)), ctz(8u), reverse_bits(uchar(1)));

}
