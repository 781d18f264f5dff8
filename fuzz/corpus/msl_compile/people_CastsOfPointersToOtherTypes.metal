#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant float* data [[buffer(1)]], device uchar* bytes [[buffer(2)]]) {
constant float4* q = (constant float4*)data; constant uint* u = reinterpret_cast<constant uint*>(data + 1); device uint* w = (device uint*)(bytes + 4); return float4(q[1].z, u[0] == 0x3F800000u, w[0] == 0x07060504u, ((constant float*)&v.v1234)[v.i3]);

}
