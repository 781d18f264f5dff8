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

// Aurora: curtains of light over a starry sky, hills and still water.
//
// slot        what it does                                   useful range   default
// color1      colour of the curtains' upper reaches          any            violet
// color2      replaces the green of the hems, by params.y     any            cyan
// color3      tints the night sky above the horizon          any            blue
// background  colour of the sky overhead and of the land     dark           near black
// params.x    height of the curtains                         0.4 .. 2       1
// params.y    hems: 0 the green of oxygen, 1 color2          0 .. 1         0
// params.z    brightness of the curtains                     -0.8 .. 1      0
// params.w    height of the horizon                          -0.1 .. 0.2    0

constant float kTwoPi = 6.2831853;

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

// Smooth noise along a line; the lattice wraps every 64 cells.
float noise(float x, float row) {
    float i = floor(x);
    float f = x - i;
    f = f * f * (3.0 - 2.0 * f);
    float a = i - 64.0 * floor(i / 64.0);
    float b = i + 1.0 - 64.0 * floor((i + 1.0) / 64.0);
    return mix(hash(float2(a, row)), hash(float2(b, row)), f);
}

float turns(float t, float rate) { return kTwoPi * fract(t * rate); }

// One layer of stars: at most one to a cell, kept away from the cell's edge so that none is cut.
float stars(float2 pixel, float cellSize, float share) {
    float2 cell = floor(pixel / cellSize);
    float2 local = pixel - cell * cellSize;
    float2 id = cell - 128.0 * floor(cell / 128.0);
    float present = step(hash(id), share);
    float2 at = cellSize * (0.16 + 0.68 * float2(hash(id + 0.31), hash(id + 0.73)));
    float size = hash(id + 0.57);
    float2 d = local - at;
    return present * (0.12 + 0.9 * pow(size, 4.0)) * exp(-dot(d, d) / (0.4 + 0.7 * size * size));
}

// Light of the curtains in direction p (height units, y up from the horizon).
float3 curtains(float2 p, float t, constant Uniforms& u) {
    float3 hem = mix(float3(0.10, 1.0, 0.42), u.color2.rgb, u.params.y);
    float3 sum = float3(0.0);
    for (int i = 0; i < 4; ++i) {
        float n = float(i);
        // A curtain hangs along a folded line; seen from below, its folds crowd the rays together.
        float near = 1.0 - 0.17 * n;
        float x = p.x * (1.1 + 0.35 * n) + 1.7 * n;
        float fold = 0.34 * sin(x * 2.3 + turns(t, 0.021 + 0.004 * n) + 1.9 * n);
        fold += 0.15 * sin(x * 5.1 - turns(t, 0.034) + p.y * 1.2 + n);
        float s = x + fold;
        float base = 0.14 + 0.105 * n + 0.058 * sin(s * 1.7 - turns(t, 0.013) + 2.3 * n);
        base += 0.024 * sin(s * 4.7 + turns(t, 0.027) + n);
        float height = (0.20 + 0.26 * noise(s * 1.9 + 20.0, n + 1.0)) * max(u.params.x, 0.1);

        // Rays are fine near the hem and run together higher up. Each reaches down by its own
        // length, and the hem is sharp only here and there: it is never the outline of a hill.
        float shift = 4.0 * sin(turns(t, 0.0061) + n);
        float rays = noise(s * 34.0 + shift * 3.0, n + 11.0) * 0.55 +
                     noise(s * 13.0 - shift * 2.0, n + 21.0) * 0.65;
        float up = p.y - base + 0.018 * (rays - 0.55);
        float soft = 0.05 + 0.15 * smoothstep(0.3, 0.8, noise(s * 2.3 - shift, n + 51.0));
        float below = smoothstep(-soft, 0.35 * soft, up);
        float fade = exp(-max(up, 0.0) / height * 1.5) * below;
        rays = mix(rays, 0.6, saturate(up * 1.1));
        float patches = smoothstep(0.18, 0.75, noise(s * 1.1 + shift * 0.4, n + 31.0));
        float bright = fade * (0.25 + 1.15 * rays * rays) * (0.12 + 0.88 * patches) * near;

        float high = smoothstep(0.02, 0.26, up);
        float3 colour = mix(hem, u.color1.rgb * float3(0.95, 0.75, 1.05), high);
        float edge = exp(-up * up * 1800.0);
        colour += float3(0.45, 0.35, 0.25) * edge * 0.35;
        sum += colour * bright;
        // The air around a curtain is never quite dark.
        float away = up - 0.03;
        sum += hem * 0.045 * (0.3 + patches) * near * exp(-away * away * 22.0);
    }
    return sum * (1.0 + u.params.z);
}

float ridge(float x) {
    return 0.030 * noise(x * 2.1 + 9.0, 41.0) + 0.016 * noise(x * 6.3, 42.0) +
           0.006 * noise(x * 21.0, 43.0);
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float t = u.time * u.speed;
    float pixel = 1.0 / u.resolution.y;

    float horizon = 0.28 - u.params.w;
    float y = horizon - p.y;
    // Below the horizon the water shows the sky again, upside down and gently rippled.
    float water = 1.0 - smoothstep(-0.5 * pixel, 0.5 * pixel, y);
    float2 q = float2(p.x, abs(y));
    float depth = max(-y, 0.0);
    float ripple = sin(depth * 210.0 / (0.25 + depth * 3.0) + turns(t, 0.11) + 9.0 * p.x);
    ripple += sin(depth * 130.0 / (0.2 + depth * 2.0) - turns(t, 0.07) - 14.0 * p.x);
    q += water * float2(0.004, 0.010) * ripple * saturate(depth * 14.0);

    float3 sky = u.background.rgb * 0.7 + u.color3.rgb * 0.13 * exp(-q.y * 3.4);
    sky += float3(0.01, 0.07, 0.05) * exp(-q.y * 5.0);
    float3 light = curtains(q, t, u);
    float3 colour = sky + light;
    // Stars keep their look from a thumbnail to a wall: their size follows the height of the
    // display.
    float2 dots = in.position.xy / clamp(u.resolution.y / 900.0, 0.7, 3.0);
    float starLight = stars(dots, 9.0, 0.10) * 0.7 + 1.3 * stars(dots + 301.0, 31.0, 0.35);
    colour += float3(0.85, 0.9, 1.0) * starLight * (1.0 - water) * saturate(q.y * 9.0) * 1.7 /
              (1.0 + 6.0 * dot(light, float3(0.33)));

    float land = ridge(p.x) + 0.004;
    float hill = 1.0 - smoothstep(-0.7 * pixel, 0.7 * pixel, q.y - land);
    float3 ground = u.background.rgb * 0.35 + float3(0.0, 0.012, 0.012);
    colour = mix(colour, ground, hill);
    colour *= mix(1.0, 0.55, water);
    colour = 1.0 - exp(-1.25 * colour);

    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
