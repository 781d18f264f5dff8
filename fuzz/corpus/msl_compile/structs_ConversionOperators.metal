#include <metal_stdlib>
using namespace metal;
struct R { float a; operator float() const { return a * 2; } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
R r{v.two}; float x = r; return float4(x, float(r), r + 1.0f, 0);

}
