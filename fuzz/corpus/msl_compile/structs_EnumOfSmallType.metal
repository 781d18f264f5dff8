#include <metal_stdlib>
using namespace metal;
enum Flags : uint8_t { none = 0, one = 1, big = 255 };
typedef enum { A, B } AB;
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Flags f = big; AB ab = B; return float4(f, sizeof(Flags), ab, f & 15);

}
