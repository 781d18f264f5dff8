#include <metal_stdlib>
using namespace metal;
template <int N> float pick(float4 x) { return x[N]; }
template <uint N, typename T> T power(T x) { T r = T(1); for (uint i = 0; i < N; ++i) r *= x; return r; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(pick<2>(v.v1234), power<3>(v.two), power<2, int>(v.i3), 0);

}
