#include <metal_stdlib>
using namespace metal;
struct In { texture2d<float> t; float k; }; struct Out { In a; In b; float m; };
float go(Out o) { return o.a.t.read(uint2(1, 2)).z * o.a.k + o.b.k + o.m; }
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , texture2d<float> tex [[texture(0)]]) {
Out o = {{tex, v.two}, {tex, 100}, 1000}; In copy = o.a; copy.k = 5; return float4(go(o), copy.k, o.a.k, 0);

}
