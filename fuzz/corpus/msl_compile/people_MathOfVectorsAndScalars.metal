#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float3 a = clamp(float3(-1, 0.5, 2) * v.one, 0.0, 1.0); float3 b = mix(a, float3(2), 0.5); float2 c = max(v.v12, 1.5); float3 d = step(0.5, a); float2 e = pow(v.v12, 2.0); return float4(b.x, c.x, d.y + smoothstep(0.0, 1.0, a).z, e.y);

}
