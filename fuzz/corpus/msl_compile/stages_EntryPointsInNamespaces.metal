#include <metal_stdlib>
using namespace metal;
namespace looks { fragment float4 f_main(float4 p [[position]]) { return float4(2); } }
