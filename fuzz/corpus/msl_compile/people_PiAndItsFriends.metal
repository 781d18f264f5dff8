#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(M_PI_F > 3.14 && M_PI_F < 3.15, M_SQRT2_F > 1.41, abs(M_PI_2_F * 2 - M_PI_F) < 1e-6, MAXFLOAT > 1e38 && INFINITY > MAXFLOAT);

}
