#include <metal_stdlib>
using namespace metal;
struct P { float a; float b; }; struct Ctx { thread P* p; };
void go(thread Ctx& c) { c.p->b += c.p->a; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p = {v.one, v.two}; Ctx c = {&p}; go(c); return float4(p.b, c.p->b, 0, 0);

}
