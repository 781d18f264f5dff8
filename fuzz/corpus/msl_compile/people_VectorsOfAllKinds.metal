#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
bool2 a = bool2(true, v.zero); char3 b = char3(1, -2, 3); ushort4 c = ushort4(65535, 2, 3, 4); long2 d = long2(5, 6); half2 e = half2(0.5, 1.5); c += ushort4(1); return float4(a.x + a.y, b.y * b.z, c.x + c.w, float(d.y) + e.y);

}
