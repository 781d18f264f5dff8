#include <metal_stdlib>
using namespace metal;
template <typename T, int C, int R> T corner(matrix<T, C, R> m) { return m[C - 1][R - 1] * T(C * 10 + R); }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float2x3 m = float2x3(float3(1, 2, 3), float3(4, 5, 6) * v.one); return float4(corner(m));

}
