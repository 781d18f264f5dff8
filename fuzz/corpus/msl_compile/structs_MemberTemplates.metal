#include <metal_stdlib>
using namespace metal;
struct C { float r; template <typename T> T scaled(T x) const { return x * T(r); } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
C c{v.two}; return float4(c.scaled(3.0f), c.scaled(v.v12), c.scaled(4));

}
