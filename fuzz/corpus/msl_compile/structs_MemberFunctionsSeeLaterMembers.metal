#include <metal_stdlib>
using namespace metal;
struct C { float twice() const { return value * factor(); } float factor() const { return 2; } float value; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
C c; c.value = v.two; return float4(c.twice());

}
