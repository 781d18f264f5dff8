#include <metal_stdlib>
using namespace metal;
template <typename T> constexpr float code() { return is_same<T, float>::value ? 1 : is_same_v<T, int> ? 2 : 3; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(code<float>(), code<int>(), code<half>(), is_floating_point_v<half> && !is_integral_v<float>);

}
