#include <metal_stdlib>
using namespace metal;
struct Out { float4 position [[position]]; float a [[flat]]; float b [[center_no_perspective]]; float c [[centroid_perspective]]; half2 d; uint e [[user(number)]]; short f [[flat]]; };
vertex Out v_main(uint vid [[vertex_id]]) { Out o; o.position = float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); o.a = vid; o.b = 3; o.c = 4; o.d = half2(5, 6); o.e = 7; o.f = -8; return o; }
fragment float4 f_main(Out in [[stage_in]]) { return float4(in.a, in.b + in.c, in.d.y, int(in.e) + in.f); }
