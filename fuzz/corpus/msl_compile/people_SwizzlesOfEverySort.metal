#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float4 a = v.v1234; a.rgb = a.bgr; a.wx = float2(a.x, 9); float3 b = a.xxy + a.wzy.zyx; a.xy.x = 20; a.zw *= a.zw; return float4(b, a.x + a.w);

}
