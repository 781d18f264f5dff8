#include <metal_stdlib>
using namespace metal;
struct P { float a; float2 b; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p[3] = {{1, float2(2)}, {3, float2(4)}, {v.two, v.v12}}; int i = v.i3 - 1; p[i].b.y += 10; return float4(p[i].a, p[i].b, p[1].b.x);

}
