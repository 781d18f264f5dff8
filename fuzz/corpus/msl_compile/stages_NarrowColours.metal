#include <metal_stdlib>
using namespace metal;
fragment half2 f_main() { return half2(1.5, 2.5); }
