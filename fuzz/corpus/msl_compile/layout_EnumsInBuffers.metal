#include <metal_stdlib>
using namespace metal;
enum class K : uint { a, b = 0x03020100 }; struct P { K k; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant P& p [[buffer(2)]]) {
return float4(p.k == K::b, 0, 0, 0);

}
