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

// Four interfering waves under a cosine palette. Look: speed scales the motion, tint multiplies.

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = in.position.xy / u.resolution;
    // Every wave turns a whole number of times as fast as the first, so the phase may wrap.
    float t = fmod(u.time * u.speed, 6.2831853);
    float sum = 0.0;
    for (int n = 1; n <= 4; ++n) {
        float i = float(n);
        sum += sin(p.x * 10.0 * i + t * i + p.y * 6.0) / i;
    }
    // The amplitudes 1 + 1/2 + 1/3 + 1/4 add up to 25/12.
    float v = 0.5 + sum * (6.0 / 25.0);
    float3 colour = 0.5 + 0.5 * cos(6.2831853 * (v + float3(0.0, 0.33, 0.67)));
    return float4(colour * u.tint.rgb, 1.0);
}
