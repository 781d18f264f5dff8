#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
int s = 0; for (int i = 0, j = 10; i < j; ++i, --j) s += j - i; uint k = 3; while (k --> 0) s += 100; for (;;) { if (++s > 500) break; } return float4(s);

}
