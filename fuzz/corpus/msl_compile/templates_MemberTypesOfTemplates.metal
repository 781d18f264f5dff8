#include <metal_stdlib>
using namespace metal;
template <typename T> struct Traits { typedef T type; using pair = vec<T, 2>; };
template <typename T> typename Traits<T>::pair both(T x) { typename Traits<T>::pair p = typename Traits<T>::pair(x, x * 2); return p; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Traits<float>::type f = v.two; return float4(both(f), both(v.i3).y, 0);

}
