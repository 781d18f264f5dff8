#include <metal_stdlib>
using namespace metal;
struct P { float a = 4; int b = 2 + 1; float3 c = float3(1, 2, 3); };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p; P q{7}; P r = {.b = 9}; return float4(p.a + q.a, r.b, r.a, p.c.y);

}
