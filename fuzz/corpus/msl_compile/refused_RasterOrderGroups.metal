#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(float4 p [[position]], float x [[raster_order_group(0)]]) { return x; }
