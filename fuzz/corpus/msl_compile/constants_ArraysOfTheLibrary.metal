#include <metal_stdlib>
using namespace metal;
constant array<float, 3> kA = {1, 2, 3}; constant array<float2, 2> kB = {{ {1, 2}, {3, 4} }};
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
array<int, 4> c = {{v.i3, 2, 3, 4}}; float s = 0; for (float x : kA) s += x; return float4(s, kB[1].y, c[0] + c[3], c.size());

}
