#include <metal_stdlib>
using namespace metal;
union U { float f; uint u; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
U x; x.f = v.one; return float4(x.u == 0x3F800000u, 0, 0, 0);

}
