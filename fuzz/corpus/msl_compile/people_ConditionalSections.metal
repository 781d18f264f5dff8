#include <metal_stdlib>
using namespace metal;
#define LEVEL 2
#if LEVEL >= 3
#error too high
#elif defined(LEVEL) && (LEVEL == 2 || LEVEL == 1) && !defined(NOTHING)
#define PICK 5
#else
#define PICK 6
#endif
#if __has_include(<metal_stdlib>) && !__has_include("nothing_here.h")
#define HAS 1
#endif
#undef LEVEL
#ifdef LEVEL
#define PICK2 1
#else
#define PICK2 2
#endif
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(PICK, HAS, PICK2, __METAL_VERSION__ >= 200);

}
