#include <metal_stdlib>
using namespace metal;
fragment float4 f_main(texture_buffer<float> t [[texture(0)]]) { return t.read(3u) + t.get_width(); }
