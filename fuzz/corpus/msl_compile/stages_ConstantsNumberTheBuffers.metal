#include <metal_stdlib>
using namespace metal;
constant constexpr int kSlot = 1;
fragment float4 f_main(constant float* a [[buffer(kSlot)]]) { return float4(a[9]); }
