#include <metal_stdlib>
using namespace metal;
using namespace metal::raytracing;
fragment float4 f_main(instance_acceleration_structure s [[buffer(0)]]) { return 0; }
