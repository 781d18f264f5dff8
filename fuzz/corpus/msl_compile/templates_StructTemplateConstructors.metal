#include <metal_stdlib>
using namespace metal;
template <typename T> struct Box { T x; Box(T y) : x(y) {} Box() : x(T(9)) {} Box<T> grown(T by) const { return Box<T>(x + by); } Box same() const { return Box(x); } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Box<float> b(v.two); Box<int> c; return float4(b.x, c.x, b.grown(3).x, b.same().x);

}
