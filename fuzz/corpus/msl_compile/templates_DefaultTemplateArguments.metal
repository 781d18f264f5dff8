#include <metal_stdlib>
using namespace metal;
template <typename T = float, int N = 3> T make() { return T(N); }
template <typename T, typename U = T> U half_of(T x) { return U(x) / 2; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(make(), make<int>(), make<float, 7>(), half_of<int, float>(v.i3));

}
