#include <metal_stdlib>
using namespace metal;
struct V { float x; float y; };
V operator*(V a, float s) { return {a.x * s, a.y * s}; }
V operator*(float s, V a) { return a * s; }
bool operator<(V a, V b) { return a.x < b.x; }
thread V& operator-=(thread V& a, V b) { a.x -= b.x; a.y -= b.y; return a; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
V a{v.one, 2}; V b = 3 * a; b -= a; return float4(b.x, b.y, a < b, 0);

}
