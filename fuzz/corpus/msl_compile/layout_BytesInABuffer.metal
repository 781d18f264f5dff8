#include <metal_stdlib>
using namespace metal;
struct B { uchar a; char b; uchar4 c; ushort d; short e; uint f; packed_uchar3 g; bool h; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant B& b [[buffer(2)]]) {
return float4(b.c.w, b.d, b.f == 0x0F0E0D0Cu, b.g.z + b.h);

}
