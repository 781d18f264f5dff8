#include <metal_stdlib>
using namespace metal;
enum class Kind : uint { a = 4, b, c = 1u << 5 };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Kind k = Kind::b; return float4(k == Kind::b, uint(k), static_cast<uint>(Kind::c), Kind::a < Kind::b);

}
