#include <metal_stdlib>
using namespace metal;
template <typename T, int N> T first(vec<T, N> x) { return x[0] * T(N); }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(first(v.v12), first(v.v1234), first(int3(v.i3)), 0);

}
