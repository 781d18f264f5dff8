#include <metal_stdlib>
using namespace metal;
struct H { half2x2 a; half4x3 b; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant H& h [[buffer(3)]]) {
int i = v.i3; return float4(h.a[1].x, h.b[0].x, h.b[3].z, h.b[i].y);

}
