#include <metal_stdlib>
using namespace metal;
struct Args { device float* out; texture2d<float> t; };
fragment float4 f_main(device Args* args [[buffer(2)]]) { args->out[3] = 8; return float4(args->out[3], args->t.get_width(), args[0].out[2], 0); }
