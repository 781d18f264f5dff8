#include <metal_stdlib>
using namespace metal;
template <int N> struct Fact { static constexpr constant int value = N * Fact<N - 1>::value; };
template <> struct Fact<0> { static constexpr constant int value = 1; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(Fact<5>::value, Fact<3>::value, Fact<0>::value, 0);

}
