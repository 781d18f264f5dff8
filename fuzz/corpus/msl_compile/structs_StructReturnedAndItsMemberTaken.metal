#include <metal_stdlib>
using namespace metal;
struct P { float3 a; };
P make(float x) { P p; p.a = float3(x, x + 1, x + 2); return p; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(make(v.two).a.zyx, make(1).a.y);

}
