#include <metal_stdlib>
using namespace metal;
template <typename T> float f(T) { return 1; }
float f(float) { return 2; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(f(v.one), f(v.i3), f(half(1)), f<float>(v.one));

}
