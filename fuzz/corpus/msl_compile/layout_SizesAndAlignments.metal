#include <metal_stdlib>
using namespace metal;
struct A { float a; float3 b; }; struct B { char a; short b; int c; bool d; }; struct C { packed_float3 a; half b; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(sizeof(A), sizeof(B), sizeof(C), alignof(float4) + alignof(packed_float4));

}
