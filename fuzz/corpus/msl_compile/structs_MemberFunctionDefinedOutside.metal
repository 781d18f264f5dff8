#include <metal_stdlib>
using namespace metal;
struct C { float r; float twice() const; static float half_of(float x); };
float C::twice() const { return r * 2; }
float C::half_of(float x) { return x / 2; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
C c{v.two}; return float4(c.twice(), C::half_of(3), 0, 0);

}
