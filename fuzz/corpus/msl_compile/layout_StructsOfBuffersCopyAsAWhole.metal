#include <metal_stdlib>
using namespace metal;
struct P { float3 a; packed_float3 b; half c; float d[2]; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant P& p [[buffer(1)]], device P* out [[buffer(4)]]) {
P q = p; q.d[1] = 50; out[1] = q; return float4(out[1].a.y, out[1].b.z, out[1].d[0], out[1].d[1]);

}
