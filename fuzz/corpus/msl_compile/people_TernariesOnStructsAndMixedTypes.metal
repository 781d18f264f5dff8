#include <metal_stdlib>
using namespace metal;
struct P { float a; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P x{1}, y{2}; P z = v.one > 0 ? y : x; float a = v.one > 2 ? 1 : 2.5; int b = v.i3 > 2 ? 'a' : 3; float2 c = v.one > 0 ? v.v12 : float2(0); return float4(z.a, a, b, c.y);

}
