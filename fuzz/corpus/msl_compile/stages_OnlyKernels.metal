#include <metal_stdlib>
using namespace metal;
kernel void k_main(device float* x [[buffer(0)]], uint i [[thread_position_in_grid]]) { x[i] = 1; }
#define v_main
