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

// Falling glyph columns. Look: speed scales the fall (never below a twentieth of the natural rate),
// tint multiplies.

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    const float cellSize = 14.0;
    float2 cell = floor(in.position.xy / cellSize);
    float2 local = in.position.xy - cell * cellSize;
    float rows = max(1.0, u.resolution.y / cellSize);

    float seed = hash(float2(cell.x, 1.0));
    float rate = mix(3.0, 10.0, hash(float2(cell.x, 2.0))) * max(0.05, u.speed);
    float head = fract(u.time * rate * 0.06 + seed) * rows;
    float behind = head - cell.y;
    if (behind < 0.0) {
        behind += rows;
    }
    float trail = saturate(1.0 - behind / 10.0);

    // The glyphs change on the clock, not with the animation; the tick wraps to keep the hash
    // exact.
    float tick = fmod(floor(u.time * 6.0), 251.0);
    float2 dot5 = floor(local / 2.0) - 1.0;
    float inGlyph = (dot5.x >= 0.0 && dot5.x < 5.0 && dot5.y >= 0.0 && dot5.y < 5.0) ? 1.0 : 0.0;
    float glyph = hash(float2(cell.x, tick) + 0.37);
    float lit = step(0.5, hash(dot5 + float2(glyph * 61.0, cell.y + 7.0))) * inGlyph;

    float3 colour = float3(0.15, 1.0, 0.30) * trail * lit;
    if (behind < 1.0) {
        colour += float3(0.85, 1.0, 0.9) * lit;
    }
    return float4(colour * u.tint.rgb, 1.0);
}
