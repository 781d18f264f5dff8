#include <metal_stdlib>
using namespace metal;
template <typename T> struct W { T x; };
template <typename T> W<T> operator+(W<T> a, W<T> b) { return W<T>{a.x + b.x}; }
template <typename T> W<T> operator*(W<T> a, T s) { return {a.x * s}; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
W<float> a{v.two}; W<float> b = (a + a) * 3.0f; return float4(b.x);

}
