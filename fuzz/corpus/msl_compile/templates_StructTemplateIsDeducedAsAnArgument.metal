#include <metal_stdlib>
using namespace metal;
template <typename T, int N> struct Buf { T d[N]; };
template <typename T, int N> T total(thread const Buf<T, N>& b) { T s = 0; for (int i = 0; i < N; i++) s += b.d[i]; return s * N; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Buf<float, 3> b = {{1, 2, v.two}}; Buf<int, 2> c = {{v.i3, 4}}; return float4(total(b), total(c), 0, 0);

}
