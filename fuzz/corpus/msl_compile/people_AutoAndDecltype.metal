#include <metal_stdlib>
using namespace metal;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
auto a = v.v12; auto b = 1; auto c = 2.5; auto d = a.x > 0; decltype(a) e = a * 2; const auto f = e.y; auto& g = e; g.x = 9; decltype(v.i3) h = 7 / 2; return float4(b + c + d, e.x, f, h);

}
