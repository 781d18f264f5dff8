#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , device uchar* c [[buffer(2)]], device short* s [[buffer(5)]], device half* h [[buffer(6)]]) {
c[5] = 250; c[6] = uchar(c[9] + 7); s[1] = -7; s[v.i3] = 9; h[1] = half(v.half_); h[2] = h[1] * 3;
return float4(c[5] + c[4], c[6], s[1] + s[3], h[2] + h[1]);

}
