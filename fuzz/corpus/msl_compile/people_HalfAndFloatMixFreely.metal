#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
half3 a = half3(v.v1234.xyz); float3 b = float3(a) + float3(a * half(2.0)); half c = a.x * 2.0h + half(v.two); float d = c * v.two; a *= 0.5; a += half3(b); return float4(b.z, c, d, a.y);

}
