#include <metal_stdlib>
using namespace metal;
struct H { half4 a; bool b; half2 c[2]; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , device H& h [[buffer(6)]]) {
h.a = half4(v.v1234); h.a.y = 9; h.a.zw = half2(6, 8); h.b = true; h.c[1] = half2(5, 6); H k = h; h.c[0].x = 1;
return float4(h.a.y + h.a.w, k.a.z, h.b, k.c[1].y + h.c[0].x);

}
