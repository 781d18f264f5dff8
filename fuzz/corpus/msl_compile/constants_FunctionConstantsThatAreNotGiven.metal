#include <metal_stdlib>
using namespace metal;
constant int kA [[function_constant(1)]]; constant int kB [[function_constant(101)]];
constant int kBOr7 = is_function_constant_defined(kB) ? kB : 7; constant bool kHasA = is_function_constant_defined(kA);
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(kBOr7, kHasA, is_function_constant_defined(kB), kA);

}
