#include <metal_stdlib>
using namespace metal;
static float4 shade(float2 p) { return float4(p, 1, 2); }
fragment float4 f_main(float4 p [[position]]) { return shade(p.xy); }
fragment float4 f_other(float4 p [[position]]) { return shade(p.yx); }
