#include <metal_stdlib>
using namespace metal;
struct C { float r; float get() const { return this->r; } void set(float r) { this->r = r; } C self() const { return *this; } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
C c{1}; c.set(v.two); return float4(c.get(), c.self().r, 0, 0);

}
