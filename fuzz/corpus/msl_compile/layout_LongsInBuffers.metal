#include <metal_stdlib>
using namespace metal;
struct P { float a; long b; ulong2 c; half d; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant P& p [[buffer(2)]]) {
return float4(p.b == 0x0F0E0D0C0B0A0908, p.c.y >> 60, sizeof(P), uint(p.c.x & 0xFF));

}
