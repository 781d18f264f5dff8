#include <metal_stdlib>
using namespace metal;
struct P { float a; int b[2]; float3 c; bool d; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p = {}; P q{}; return float4(p.a, p.b[1], q.c.z, q.d);

}
