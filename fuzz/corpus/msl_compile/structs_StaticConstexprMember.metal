#include <metal_stdlib>
using namespace metal;
struct P { static constexpr constant float kScale = 2.5; float get() const { return kScale; } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
P p; return float4(P::kScale, p.get(), 0, 0);

}
