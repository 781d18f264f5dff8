#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(float x) { return x; }
