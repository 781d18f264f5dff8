#include <metal_stdlib>
using namespace metal;
#include <simd/simd.h>
using namespace simd;
struct U { vector_float2 a; matrix_float4x4 m; vector_uint4 b; simd_float3 c; simd_float2x2 d; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
U u; u.a = vector_float2{1, v.two}; u.m = matrix_float4x4(2.0); u.b = uint4(v.u5); u.c = simd_float3(4); u.d = simd_float2x2(v.one); return float4(u.a.y, u.m[1][1], u.b.w, u.c.z + u.d[0].x);

}
