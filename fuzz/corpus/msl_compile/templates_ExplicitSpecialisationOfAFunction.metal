#include <metal_stdlib>
using namespace metal;
template <typename T> float kind(T) { return 1; }
template <> float kind<int>(int) { return 2; }
template <> float kind(uint) { return 3; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(kind(v.one), kind(v.i3), kind(v.u5), kind<int>(7));

}
