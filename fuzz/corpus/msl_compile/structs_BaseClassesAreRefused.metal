#include <metal_stdlib>
using namespace metal;
struct A { float a; }; struct B : A { float b; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return 0;

}
