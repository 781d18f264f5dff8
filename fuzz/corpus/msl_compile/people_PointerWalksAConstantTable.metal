#include <metal_stdlib>
using namespace metal;
constant float kT[4] = {1, 2, 3, 4};
float sum(constant float* p, int n) { float s = 0; for (int i = 0; i < n; i++) s += p[i]; return s; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(sum(kT, v.i3), sum(kT + 1, 2), *(kT + 2), sum(&kT[2], 2));

}
