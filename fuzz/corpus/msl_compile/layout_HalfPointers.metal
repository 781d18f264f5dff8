#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant half* h [[buffer(3)]], constant half4* q [[buffer(4)]]) {
constant half* p = h + 3; return float4(h[v.i3], p[2], q[1].x, h[v.u5 * 2]);

}
