#include <metal_stdlib>
using namespace metal;
struct Outer { struct { float x; float y; } a; struct Named { int n; } b[2]; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Outer o; o.a.x = v.two; o.a.y = 5; o.b[1].n = 6; return float4(o.a.x, o.a.y, o.b[1].n, 0);

}
