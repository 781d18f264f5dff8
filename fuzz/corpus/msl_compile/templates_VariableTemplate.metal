#include <metal_stdlib>
using namespace metal;
template <typename T> constant T kPi = T(3.25); template <int N> constexpr constant int kDouble = N * 2;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(kPi<float>, kPi<int>, kDouble<21>, 0);

}
