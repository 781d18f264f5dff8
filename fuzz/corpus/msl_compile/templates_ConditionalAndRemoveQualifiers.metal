#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
conditional_t<true, float, int> a = 2.5; conditional<false, float, int>::type b = 2; return float4(a, b, is_same<remove_cv_t<const float>, float>::value, is_same<make_unsigned_t<int>, uint>::value);

}
