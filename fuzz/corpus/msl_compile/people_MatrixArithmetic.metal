#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float3x3 a = float3x3(2.0f) * v.two; float3x3 b = a - float3x3(1); float3 p = float3(1, 2, 3) * b; a += b; a *= 0.5f; float3x3 c = -a / 2; bool same = all(a[0] == a[0]); return float4(p.z, a[1][1], c[2][2], same);

}
