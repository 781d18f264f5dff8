#include <metal_stdlib>
using namespace metal;
struct Args { texture2d<float> t; float4 color; constant float4& extra; array<texture2d<float>, 2> more; half h; };
float4 go(constant Args& a) { return a.t.read(uint2(1)) + a.more[1].read(uint2(1)) + a.extra + a.color; }
fragment float4 f_main(constant Args& args [[buffer(1)]]) { return go(args) + float4(args.h); }
