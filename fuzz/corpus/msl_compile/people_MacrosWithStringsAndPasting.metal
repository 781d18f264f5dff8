#include <metal_stdlib>
using namespace metal;
#define CAT(a, b) a##b
#define CAT2(a, b) CAT(a, b)
#define LINE_NAME CAT2(var, __COUNTER__)
#define MAXOF(a, b) ((a) > (b) ? (a) : (b))
#define APPLY(m, ...) m(__VA_ARGS__)
#define EMPTY
#define STMT(x) do { x; } while (0)
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
float CAT(fo, o) = v.two; STMT(foo += 1); return float4(APPLY(MAXOF, foo, 2), CAT2(fo, o) EMPTY, MAXOF(v.i3, 7), 0);

}
