#include <metal_stdlib>
using namespace metal;
enum { kCount = 3, kMore = kCount * 2 };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float a[kMore] = {1, 2, 3, 4, 5, v.two}; return float4(a[kCount], sizeof(a) / sizeof(float), 0, 0);

}
