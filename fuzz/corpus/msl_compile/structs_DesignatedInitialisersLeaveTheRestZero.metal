#include <metal_stdlib>
using namespace metal;
struct P { float a; float b; float c; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p = {.c = v.two, }; P q = P{.a = 1, .b = v.two}; return float4(p.a, p.c, q.b, q.c);

}
