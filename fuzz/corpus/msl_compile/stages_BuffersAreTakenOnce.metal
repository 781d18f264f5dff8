#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(constant float& a [[buffer(1)]], constant float& b [[buffer(1)]]) { return a + b; }
