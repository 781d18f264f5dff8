#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float3 a = float3(v.one, 2, 2); return float4(length(a), distance(a, float3(0)), dot(a, a), length_squared(a)) + float4(normalize(a).x * 3, distance_squared(a, float3(1)), cross(float3(1, 0, 0), float3(0, 1, 0)).z, fast::length(float2(3, 4)));

}
