#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float4 a = v.v1234; return float4(any(a > 3) + all(a > 0), select(1.0, 2.0, v.one > 0), select(int2(1), int2(2), bool2(true, false)).y, isnormal(v.one) + signbit(-v.one));

}
