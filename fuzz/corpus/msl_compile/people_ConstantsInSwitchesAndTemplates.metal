#include <metal_stdlib>
using namespace metal;
constant constexpr int kA = 1; static constant int kB = kA + 1; enum { kC = kB + 1 };
template <int N> int times(int x) { return x * N; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
switch (v.i3) { case kA: return 1; case kC: return float4(times<kB>(v.i3), times<kC>(2), 0, 0); } return 9;

}
