#include <metal_stdlib>
using namespace metal;
enum Index { first = 0, floats = 1, last = floats + 2 };
enum class Scoped : int { halves = 3 };
#define SLOT floats
fragment float4 f_main(constant float* a [[buffer(SLOT)]], constant half* h [[buffer(last)]]) { return float4(a[5], h[3], 0, 0); }
