#include <metal_stdlib>
using namespace metal;
struct H { half a; half b; half2 c; half4 d; half e[3]; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant H& h [[buffer(3)]]) {
return float4(h.a + h.b, h.c.y, h.d.z, h.e[v.i3 - 1]);

}
