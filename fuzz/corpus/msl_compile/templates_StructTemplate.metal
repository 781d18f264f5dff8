#include <metal_stdlib>
using namespace metal;
template <typename T> struct Pair { T a; T b; T sum() const { return a + b; } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Pair<float> p = {v.one, v.two}; Pair<int> q{v.i3, 4}; return float4(p.sum(), q.sum(), p.a, sizeof(Pair<float3>));

}
