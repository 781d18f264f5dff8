#include <metal_stdlib>
using namespace metal;
constant bool kUse [[function_constant(0)]]; constant int kCount [[function_constant(3)]]; constant float kScale [[function_constant(4)]]; constant uint kBits [[function_constant(5)]];
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float s = 0; for (int i = 0; i < kCount; i++) s += 1; return float4(kUse ? 1 : 2, s, kScale, kBits + 1);

}
