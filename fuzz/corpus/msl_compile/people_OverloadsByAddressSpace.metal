#include <metal_stdlib>
using namespace metal;
float get(constant float4& x) { return x.x + 10; } float get(thread float4& x) { return x.x + 20; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float4 a = v.v1234; return float4(get(v.v1234), get(a), 0, 0);

}
