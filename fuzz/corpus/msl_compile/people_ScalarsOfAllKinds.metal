#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
char a = -5; uchar b = 250; short c = -300; ushort d = 65535; int e = 1 << 20; uint f = 3000000000u; long g = 1L << 33; ulong h = 5ul; size_t i = 6; ptrdiff_t j = -7; int8_t k = -8; uint16_t l = 9; return float4(a + b, c + d, float(e) / float(f > 2999999999u), (g >> 31) + h + i + j + k + l);

}
