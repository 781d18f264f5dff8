#include <metal_stdlib>
using namespace metal;
template <typename Tx, typename Ty> inline Tx mod(Tx x, Ty y) { return x - y * floor(x / y); }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(mod(-v.one, 3.0f), mod(float2(5, -1) * v.one, 3.0f), mod(v.v12, v.v12).x);

}
