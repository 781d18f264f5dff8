#include <metal_stdlib>
using namespace metal;
fragment float4 f_main([[position]] float4 p) { return p; }
