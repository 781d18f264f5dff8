#include <metal_stdlib>
using namespace metal;
struct Out { float4 position [[position]]; float size [[point_size]]; uint layer [[render_target_array_index]]; uint view [[viewport_array_index]]; };
vertex Out v_main(uint vid [[vertex_id]], uint i [[instance_id]], uint bv [[base_vertex]], uint bi [[base_instance]]) { Out o; o.position = float4(vid + bv); o.size = 3; o.layer = i + bi; o.view = 0; return o; }
fragment float4 f_main(uint layer [[render_target_array_index]], uint view [[viewport_array_index]], uint prim [[primitive_id]]) { return float4(layer, view, prim, 0); }
