#include <metal_stdlib>
using namespace metal;
namespace lib { float f(float x) { return x + 1; } struct P { float x; }; template <typename T> T id(T x) { return x; } }
using lib::f; using lib::P; using lib::id; using metal::max; typedef lib::P Q;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p{v.two}; Q q = p; return float4(f(v.one), p.x, id(q.x), max(1.0f, v.two));

}
