#include <metal_stdlib>
using namespace metal;
struct Args { texture2d<float> t [[id(0)]]; sampler s [[id(1)]]; constant float* data [[id(2)]]; float scale [[id(3)]]; };
fragment float4 f_main(constant Args& args [[buffer(0)]]) { return args.t.sample(args.s, float2(0.375)) + float4(0, 0, args.data[7], args.data[2]); }
