#include <metal_stdlib>
using namespace metal;
struct Out { float4 color [[color(0)]]; float depth [[depth(less)]]; };
[[early_fragment_tests]] fragment float4 other() { return 0; }
fragment Out f_main(float4 p [[position]]) { Out o; o.color = p; o.depth = p.z * 0.5; return o; }
