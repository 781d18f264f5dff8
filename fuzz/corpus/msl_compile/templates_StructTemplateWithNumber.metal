#include <metal_stdlib>
using namespace metal;
template <typename T, int N> struct Ring { T items[N]; T get(int i) const { return items[i % N]; } static constexpr constant int count = N; };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Ring<float, 3> r; for (int i = 0; i < 3; i++) r.items[i] = i * v.two; return float4(r.get(4), r.get(5), Ring<float, 3>::count, Ring<int, 9>::count);

}
