#include <metal_stdlib>
using namespace metal;
struct B; struct A { float x; float with(thread const B& b) const; }; struct B { float y; };
float A::with(thread const B& b) const { return x + b.y; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
A a{v.one}; B b{v.two}; return float4(a.with(b));

}
