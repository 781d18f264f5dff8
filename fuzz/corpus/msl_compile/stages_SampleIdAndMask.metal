#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(float4 p [[position]], uint id [[sample_id]], uint mask [[sample_mask]]) { return float4(id, mask, p.x, 0); }
