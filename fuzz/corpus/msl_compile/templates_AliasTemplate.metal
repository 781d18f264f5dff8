#include <metal_stdlib>
using namespace metal;
template <typename T> using V3 = vec<T, 3>; template <int N> using Floats = array<float, N>;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
V3<float> a = V3<float>(1, v.two, 3); Floats<2> b = {5, v.two}; return float4(a.yz, b[0], b[1]);

}
