#include <metal_stdlib>
using namespace metal;
struct B { float a[4]; float3 c; };
float get(constant float* p, int i) { return p[i]; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant B& b [[buffer(1)]]) {
constant float* p = &b.a[1]; constant float3& c = b.c; return float4(get(p, 1), *(p + 2), get(b.a, v.i3), c.z);

}
