#include <metal_stdlib>
using namespace metal;
struct Add { float operator()(float a, float b) const { return a + b; } };
struct Mul { float operator()(float a, float b) const { return a * b; } };
template <typename F> float apply(F f, float a, float b) { return f(a, b); }
template <typename F> float reduce(float4 x) { F f; return f(f(x.x, x.y), f(x.z, x.w)); }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(apply(Add(), v.two, 3), apply(Mul{}, v.two, 3), reduce<Add>(v.v1234), reduce<Mul>(v.v1234));

}
