#include <metal_stdlib>
using namespace metal;
template <typename T> struct Kind { static constexpr constant int value = 1; };
template <typename T, int N> struct Kind<vec<T, N>> { static constexpr constant int value = 10 * N; };
template <> struct Kind<int> { static constexpr constant int value = 2; };
template <typename T> struct Kind<thread T*> { static constexpr constant int value = 3; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(Kind<float>::value, Kind<float3>::value, Kind<int>::value, Kind<thread int*>::value);

}
