#include <metal_stdlib>
using namespace metal;
struct P { float a; float b; };
void fill(thread P* p, float x) { p->a = x; (*p).b = x * 2; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p; fill(&p, v.two); thread P* q = &p; q->a += 1; return float4(p.a, q->b, 0, 0);

}
