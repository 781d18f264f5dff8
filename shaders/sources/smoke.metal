#include <metal_stdlib>
using namespace metal;

struct Uniforms {
    float2 resolution;
    float  time;
    float  speed;
    float4 tint; // rgb used; a = unused
    float4 color1;
    float4 color2;
    float4 color3;
    float4 background;
    float4 params;
    float4 custom0;
    float4 custom1;
    float4 custom2;
    float4 custom3;
    float4 custom4;
    float4 custom5;
    float4 custom6;
    float4 custom7;
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

// Smoke that curls and drifts, in two sheets, lit from the upper left.
//
// slot        what it does                                   useful range   default
// color1      tints the smoke where the light falls on it    any            violet
// color2      tints the thin smoke that the light shines through  any       cyan
// color3      tints the shaded side and the far sheet        any            blue
// background  colour of the dark behind the smoke            dark           near black
// params.x    size of the billows                            0.5 .. 2       1
// params.y    more smoke (above 0) or less (below)           -0.5 .. 0.5    0
// params.z    depth of the tints: -1 is grey smoke           -1 .. 1        0
// params.w    strength of the light                          -0.5 .. 1      0

constant float kTwoPi = 6.2831853;

// Arguments are wrapped lattice points, so that the sine's argument stays small.
float hash(float2 p) {
    return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453);
}

float noise(float2 p) {
    float2 i = floor(p);
    float2 f = p - i;
    f = f * f * (3.0 - 2.0 * f);
    float2 a = i - 64.0 * floor(i / 64.0);
    float2 b = a + 1.0;
    b -= 64.0 * floor(b / 64.0);
    return mix(mix(hash(a), hash(float2(b.x, a.y)), f.x),
               mix(hash(float2(a.x, b.y)), hash(b), f.x), f.y);
}

// Four octaves, each turned against the last so that the lattice cannot be seen.
float billows(float2 p) {
    float sum = 0.0;
    float weight = 0.52;
    for (int i = 0; i < 4; ++i) {
        sum += weight * noise(p);
        p = float2(1.62 * p.x + 1.21 * p.y, 1.62 * p.y - 1.21 * p.x) + 7.3;
        weight *= 0.48;
    }
    return sum;
}

// Bends the plane into itself as rising air does; each turn is finer and quicker than the last.
float2 curl(float2 p, float t, float seed) {
    float size = 0.62;
    float pitch = 1.35;
    for (int i = 0; i < 4; ++i) {
        float n = float(i);
        float a = kTwoPi * fract(t * (0.011 + 0.006 * n) + seed);
        p += size * float2(sin(p.y * pitch + a + n), cos(p.x * pitch - a + 2.1 * n));
        size *= 0.56;
        pitch *= 1.85;
    }
    return p;
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float2 screen = p;
    p *= 2.1 / max(u.params.x, 0.05);
    float t = u.time * u.speed;

    // The air travels on a circle so wide that it reads as a straight drift, and never leaves it.
    float drift = kTwoPi * fract(t * 0.00045);
    float2 wind = 9.0 * float2(cos(drift), sin(drift));
    float more = u.params.y;

    float2 far = curl(p * 0.8 + wind * 0.6 + 3.7, t * 0.7, 0.4);
    float farSmoke = smoothstep(0.30 - more, 0.85 - more, billows(far * 0.9));

    float2 near = curl(p + wind, t, 0.0);
    float2 toLight = float2(-0.16, -0.22);
    float body = billows(near * 1.1);
    float shade = billows(near * 1.1 + toLight);
    float smoke = smoothstep(0.34 - more, 0.92 - more, body);
    // Where the smoke thins towards the light it is lit, where it thickens it stands in shadow.
    float light = saturate(0.46 + (body - shade) * 2.6);
    float rim = smoke * (1.0 - smoke) * 4.0;

    float tintDepth = saturate(0.42 + 0.42 * u.params.z);
    float3 grey = float3(0.78, 0.80, 0.86);
    float3 lit = mix(grey, u.color1.rgb, tintDepth);
    float3 thin = mix(grey, u.color2.rgb, tintDepth);
    float3 dark = mix(grey, u.color3.rgb, tintDepth) * 0.16;

    float glow = exp(-2.2 * length(screen - float2(-0.35, -0.45)));
    float strength = (0.55 + 0.75 * glow) * (1.0 + u.params.w);
    float3 colour = u.background.rgb * (0.6 + 0.8 * glow);
    colour += (dark * 0.9 + thin * 0.10 * strength) * farSmoke;
    float3 front = mix(dark, lit * strength, light * light) + thin * rim * 0.22 * strength * light;
    colour = mix(colour, front, smoke * (0.55 + 0.4 * smoke));
    colour = colour / (1.0 + 0.25 * colour);

    colour += (hash(fmod(in.position.xy, 128.0)) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
