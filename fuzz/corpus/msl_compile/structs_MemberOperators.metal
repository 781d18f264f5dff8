#include <metal_stdlib>
using namespace metal;
struct V { float x; V operator+(V o) const { return {x + o.x}; } V operator-() const { return {-x}; }
  thread V& operator+=(float s) { x += s; return *this; } float operator[](int i) const { return x * i; }
  float operator()(float a, float b) const { return x + a + b; } bool operator==(V o) const { return x == o.x; } };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
V a{v.two}; V b = a + V{3}; b += 4; V c = -b; return float4(b.x, c.x, a[5], a(1, 2));

}
