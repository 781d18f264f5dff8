#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
ulong a = mulhi(0xFFFFFFFFFFFFFFFFul, ulong(v.u5)); long b = mulhi(-1L, long(v.i3)); uint c = mulhi(0xFFFFFFFFu, v.u5); ulong d = madhi(1ul << 63, 4ul, 5ul); return float4(a, b, c, d);

}
