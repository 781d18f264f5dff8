#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , depth2d_ms<float> t [[texture(0)]]) {
return float4(t.read(uint2(1), 0), t.get_num_samples(), t.get_height(), 0);

}
