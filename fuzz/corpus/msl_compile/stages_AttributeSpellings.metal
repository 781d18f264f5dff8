#include <metal_stdlib>
using namespace metal;
[[vertex]] float4 v_main(uint vid [[vertex_id]]) { return float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); }
[[fragment]] float4 f_main(float4 p [[position]]) { return float4(p.xy, 7, 8); }
