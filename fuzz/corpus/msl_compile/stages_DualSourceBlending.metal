#include <metal_stdlib>
using namespace metal;
struct Out { float4 a [[color(0), index(0)]]; float4 b [[color(0), index(1)]]; };
fragment Out f_main() { return {float4(5), float4(1)}; }
