#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(bool front [[front_facing]], float2 at [[point_coord]]) { return float4(front, !front, 0, 0); }
