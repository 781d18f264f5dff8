#include <metal_stdlib>
using namespace metal;
template <typename T, typename = enable_if_t<is_floating_point<T>::value>> float kind(T) { return 1; }
template <typename T, typename = enable_if_t<is_integral<T>::value>, typename = void> float kind(T) { return 2; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(kind(v.one), kind(v.i3), kind(half(1)), kind(v.u5));

}
