#include <metal_stdlib>
using namespace metal;
struct Out { float4 position [[position]]; float a [[sample_perspective]]; float b [[sample_no_perspective]]; };
vertex Out v_main(uint vid [[vertex_id]]) { return {float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1), 2, 3}; }
fragment float4 f_main(Out in [[stage_in]]) { return float4(in.a, in.b, 0, 0); }
