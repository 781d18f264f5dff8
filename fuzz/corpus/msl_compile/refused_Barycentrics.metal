#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(float3 b [[barycentric_coord]]) { return b.xxyz; }
