#include <metal_stdlib>
using namespace metal;
template <typename T> void bump(thread T& x, T by) { x += by; }
template <typename T> T read(constant T& x) { return x; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float a = v.one; bump(a, 3.0f); int n = 1; bump(n, v.i3); return float4(a, n, read(v.two), read(v.v12).y);

}
