#include <metal_stdlib>
using namespace metal;
typedef struct { float a; float2 b; } Pair;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Pair p; p.a = v.one; p.b = v.v12; return float4(p.a, p.b, 0);

}
