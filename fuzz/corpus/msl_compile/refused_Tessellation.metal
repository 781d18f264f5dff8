#include <metal_stdlib>
using namespace metal;
struct P { float4 p [[attribute(0)]]; };
[[patch(quad, 4)]] vertex float4 v_main(patch_control_point<P> in [[stage_in]]) { return 0; }
