#include <metal_stdlib>
using namespace metal;
float get(int i) { constexpr float t[3] = {5, 6, 7}; const int u[] = {1, 2, 3}; return t[i] * u[i]; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(get(v.i3 - 1), get(0), 0, 0);

}
