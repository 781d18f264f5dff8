#include <metal_stdlib>
using namespace metal;
template <typename T, size_t N> T sum(thread const T (&a)[N]) { T s = T(0); for (size_t i = 0; i < N; i++) s += a[i]; return s; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float a[3] = {1, 2, v.two}; int b[4] = {1, 2, 3, v.i3}; return float4(sum(a), sum(b), 0, 0);

}
