#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(constant float* b [[buffer(0)]], constant float* a) { return float4(a[3], b[1], 0, 0); }
