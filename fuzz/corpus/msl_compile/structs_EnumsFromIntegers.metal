#include <metal_stdlib>
using namespace metal;
enum Mode { first, second, third };
enum class K { a, b };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Mode m = Mode(v.i3 - 1); Mode n = (Mode)1; K k = static_cast<K>(v.i3 - 2); return float4(m == third, n == second, k == K::b, 0);

}
