#include <metal_stdlib>
using namespace metal;
namespace lib { float helper(float x) { return x * 10; } template <typename T> T use(T x) { return helper(x) + 1; } template <typename T> struct S { T x; T go() const { return helper(x); } }; }
float helper(float x) { return -1; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
lib::S<float> s{v.two}; return float4(lib::use(v.two), s.go(), 0, 0);

}
