#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
bool a = true and not (v.one > 2) or false; int b = (6 bitand 3) bitor 8; b xor_eq 1; b and_eq 15; return float4(a, b, compl 0, 1 not_eq 2);

}
