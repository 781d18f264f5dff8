#include <metal_stdlib>
using namespace metal;
namespace a::b { constant float k = 1; float f() { return k; } struct S { float x; }; enum class E { one = 4 }; }
namespace a { namespace b { float g() { return f() + 1; } } using namespace b; float h() { return g() + f(); } }
namespace { float hidden() { return 7; } }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
a::b::S s{v.two}; a::b::E e = a::b::E::one; return float4(a::h(), s.x, hidden(), int(e));

}
