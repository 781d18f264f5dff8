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

// A spiral of six arms. Look: speed scales the turning, tint colours the arms.

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float phase = fmod(u.time * u.speed * 2.0, 6.2831853);
    float level = 0.5 + 0.5 * sin(atan2(p.y, p.x) * 6.0 + length(p) * 20.0 - phase);
    return float4(level * u.tint.rgb, 1.0);
}
