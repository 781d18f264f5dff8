#include <metal_stdlib>
using namespace metal;
#define NS_OPTIONS(_type, _name) enum _name : _type
typedef NS_OPTIONS(uint, Flags) { FlagA = 1 << 0, FlagB = 1 << 1 };
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
Flags f = FlagB; uint both = FlagA | FlagB; return float4(f, both, (both & FlagA) != 0, 0);

}
