#include <metal_stdlib>
using namespace metal;
namespace a { constant float k = 2; namespace b { constant float k = 3; } inline namespace c { constant float m = 4; } } namespace z = a::b; using a::b::k;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(a::k, z::k, k, a::c::m);

}
