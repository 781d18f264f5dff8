#include <metal_stdlib>
using namespace metal;
struct Outer { struct Inner { float x; }; Inner a; float y; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Outer o; o.a.x = v.two; o.y = 3; Outer::Inner i = o.a; return float4(i.x, o.y, 0, 0);

}
