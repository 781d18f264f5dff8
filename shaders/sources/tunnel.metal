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

// A flight through a chequered tunnel. Look: speed scales the flight, tint colours the walls.

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float radius = max(length(p), 0.001);
    // The pattern repeats along the tunnel every 2 pi / 12, so the distance flown may wrap there.
    float flown = fmod(u.time * u.speed * 0.5, 0.52359878);
    float2 wall = float2(0.3 / radius + flown, atan2(p.y, p.x) / 3.14159);
    float pattern = 0.5 + 0.5 * sin(wall.x * 12.0) * sin(wall.y * 30.0);
    float level = pattern * clamp(radius * 2.0, 0.0, 1.0);
    return float4(level * u.tint.rgb, 1.0);
}
