#include <metal_stdlib>
using namespace metal;
struct Out { float4 position [[position]]; float clip [[clip_distance]]; };
vertex Out v_main(uint vid [[vertex_id]]) { Out o; o.position = float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); o.clip = -1; return o; }
fragment float4 f_main() { return float4(1); }
