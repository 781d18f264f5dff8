#include <metal_stdlib>
using namespace metal;
kernel void k_main(device float* x [[buffer(0)]], uint i [[thread_position_in_grid]]) { x[i] = 1; }
fragment float4 f_main() { return float4(4); }
