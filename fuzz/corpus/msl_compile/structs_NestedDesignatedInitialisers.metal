#include <metal_stdlib>
using namespace metal;
struct In { float x; float y; }; struct Out { In in; float z; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Out o = {.in = {.y = v.two}, .z = 3}; return float4(o.in.x, o.in.y, o.z, 0);

}
