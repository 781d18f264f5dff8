#include <metal_stdlib>
using namespace metal;
#define SQ(x) ((x) * (x))
struct U { float2 r; float t; float4 c[2]; };
struct V { float4 position [[position]]; float2 uv; };
vertex V v_main(uint vid [[vertex_id]]) { V o; o.position = float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); o.uv = o.position.xy; return o; }
template <typename T> T twice(T x) { return x + x; }
float early(float x) { for (int i = 0; i < 4; i++) { if (x > float(i)) return SQ(x); x += 0.25; } return x; }
void bump(thread float& x) { x += 1; }
fragment float4 f_main(V in [[stage_in]], constant U& u [[buffer(0)]], texture2d<float> t [[texture(0)]]) {
    constexpr sampler s(filter::linear);
    float a[3] = {1, 2, 3}; a[int(u.t)] = twice(u.t); bump(a[1]);
    switch (int(u.t)) { case 1: a[0] += 1; case 2: a[0] += 2; break; default: a[0] = 0; }
    if (in.uv.x < 0) discard_fragment();
    float3 c = mix(u.c[0].rgb, u.c[1].zyx, in.uv.y > 0 ? early(u.t) : 0.5);
    do { c.xy *= 0.5; } while (c.x > 1);
    return float4(c, a[0]) + t.sample(s, in.uv);
}
