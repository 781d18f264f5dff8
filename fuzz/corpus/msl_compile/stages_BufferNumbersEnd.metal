#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(constant float& a [[buffer(31)]]) { return a; }
