#include <metal_stdlib>
using namespace metal;
enum Mode { first, second, third = 10, fourth };
float pick(Mode m) { switch (m) { case first: return 1; case third: return 3; default: return 9; } }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Mode m = v.i3 == 3 ? third : first; return float4(pick(m), pick(second), fourth, int(m));

}
