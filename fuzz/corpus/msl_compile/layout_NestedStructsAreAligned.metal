#include <metal_stdlib>
using namespace metal;
struct In { float a; float3 b; }; struct P { float x; In in; float y; In more[2]; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant P& p [[buffer(1)]]) {
return float4(p.in.a, p.in.b.y, p.y, p.more[1].b.x);

}
