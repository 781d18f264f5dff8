#include <metal_stdlib>
using namespace metal;
struct In { float3 position [[attribute(0)]]; half4 color [[attribute(1)]]; uchar4 weights [[attribute(2)]]; int2 cell [[attribute(3)]]; packed_float2 uv [[attribute(4)]]; };
struct Out { float4 position [[position]]; half4 color; };
vertex Out v_main(In in [[stage_in]], constant float4x4& m [[buffer(0)]]) { Out o; o.position = m * float4(in.position, 1); o.color = in.color * half(in.weights.x) + half(in.uv.y); return o; }
fragment half4 f_main(Out in [[stage_in]]) { return in.color; }
