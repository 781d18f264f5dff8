#include <metal_stdlib>
using namespace metal;
struct In { texture2d<float> t [[texture(1)]]; sampler s [[sampler(0)]]; constant float* data [[buffer(1)]]; constant float4& four [[buffer(4)]]; };
fragment float4 f_main(In in) { return in.t.sample(in.s, float2(0.9)) + float4(in.data[2]) + in.four; }
