#include <metal_stdlib>
using namespace metal;
struct Out { float4 color [[color(0)]]; uint mask [[sample_mask]]; };
fragment Out f_main(float4 p [[position]]) { return {float4(3), p.x < 1 ? 0u : 1u}; }
