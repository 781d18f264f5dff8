#include <metal_stdlib>
using namespace metal;

struct Uniforms {
    float2 resolution;
    float  time;
    float  speed;
    float4 tint; // rgb used; a = unused
};

struct VOut {
    float4 position [[position]];
};

vertex VOut v_main(uint vid [[vertex_id]]) {
    // Oversized triangle covering the whole clip space.
    float2 p = float2((vid << 1) & 2, vid & 2);
    VOut o;
    o.position = float4(p * 2.0 - 1.0, 0.0, 1.0);
    return o;
}

// A breathing cellular pattern. Look: speed scales the motion of the cells, tint colours them.
// Each cell's point circles in its own place, so the nearest one is never further than in the
// eight neighbours.

float2 hash2(float2 p) {
    float2 q = float2(dot(p, float2(127.1, 311.7)), dot(p, float2(269.5, 183.3)));
    return fract(sin(q) * 43758.5453);
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = in.position.xy / u.resolution.y * 8.0;
    float2 home = floor(p);
    float2 local = p - home;
    float t = fmod(u.time * u.speed, 6.2831853);
    float nearest = 1.5;
    for (int y = -1; y <= 1; ++y) {
        for (int x = -1; x <= 1; ++x) {
            float2 offset = float2(float(x), float(y));
            float2 point = 0.5 + 0.5 * sin(t + 6.28318 * hash2(home + offset));
            nearest = min(nearest, length(offset + point - local));
        }
    }
    return float4((1.0 - nearest) * u.tint.rgb, 1.0);
}
