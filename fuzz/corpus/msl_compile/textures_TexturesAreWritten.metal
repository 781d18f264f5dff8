#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float, access::read_write> t [[texture(0)]]) {
uint2 at = uint2(fragCoord.xy); float4 was = t.read(at); t.write(float4(9, was.yz, v.two), at); t.fence(); return t.read(at);

}
