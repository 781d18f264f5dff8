#include <metal_stdlib>
using namespace metal;
static inline __attribute__((always_inline)) float a(float x) { return x; }
METAL_FUNC float b(float x) { return x * 2; }
[[clang::noinline]] inline float c(float x) { return x * 3; }
[[nodiscard]] constexpr float d(float x) { return x * 4; }
float e(float x [[maybe_unused]]) { return 5; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(a(v.one) + b(v.one), c(v.one), d(v.one), e(v.one));

}
