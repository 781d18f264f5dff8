#include <metal_stdlib>
using namespace metal;
struct Ctx { thread float& out; thread float3& color; };
void go(Ctx c, float by) { c.out += by; c.color.y = by; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float x = v.one; float3 k = float3(7); Ctx c = {x, k}; go(c, v.two); go(c, 3); return float4(x, k);

}
