#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<short> t [[texture(0)]], texture2d<ushort> u [[texture(1)]]) {
short4 a = t.read(ushort2(3, 2)); ushort4 b = u.read(ushort2(1, 1)); return float4(a.x, a.z, b.z, b.w);

}
