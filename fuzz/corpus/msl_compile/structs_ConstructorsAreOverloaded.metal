#include <metal_stdlib>
using namespace metal;
struct R { float a, b; R() : a(1), b(2) {} R(float x) : a(x), b(x) {} R(float x, float y) { a = x; b = y; } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
R r; R s(v.two); R t = R(3, 4); R u{5, 6}; return float4(r.b, s.a, t.b, u.a);

}
