#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(float4 old [[color(0)]]) { return old; }
