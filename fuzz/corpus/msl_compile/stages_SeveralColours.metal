#include <metal_stdlib>
using namespace metal;
struct Out { float4 a [[color(0)]]; half4 b [[color(1)]]; uint2 c [[color(2)]]; };
fragment Out f_main() { return {float4(5), half4(1), uint2(3)}; }
