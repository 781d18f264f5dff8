#include <metal_stdlib>
using namespace metal;
template <typename T> T sq(T x) { return x * x; }
template <typename T> T quad(T x) { return sq(sq(x)); }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(quad(v.two), quad(v.i3), quad(v.v12));

}
