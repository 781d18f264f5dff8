#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , device float* data [[buffer(1)]]) {
device float* p = data + 4; p[1] = v.two; device float& r = p[2]; r = p[-1] + 4; return float4(data[5], data[6], *p, p[v.i3]);

}
