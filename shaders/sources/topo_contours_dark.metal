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

// The map at night: thin luminous contour lines on near black.
//
// slot        what it does                                   useful range   default
// color1      lines of the summits                           any            violet
// color2      lines of the shores and lowlands               any            cyan
// color3      lines of the slopes between                    any            blue
// background  colour of the night                            dark           near black
// params.x    scale of the map                               0.5 .. 2       1
// params.y    contours more (above 0) or fewer (below)       -0.7 .. 1      0
// params.z    glow around the lines                          -1 .. 1        0
// params.w    level of the shore                             -0.3 .. 0.3    0

constant float kTwoPi = 6.2831853;

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

float2 wrap(float2 cell) { return cell - 128.0 * floor(cell / 128.0); }

// A direction of any length up to that of a diagonal, from one random number.
float2 slopeAt(float2 cell) {
    float h = hash(cell);
    return float2(h, fract(h * 91.7)) * 2.0 - 1.0;
}

// Gradient noise about 0 and its gradient, (value, d/dx, d/dy): K. Perlin, "Improving Noise", 2002.
// It has no flats along its lattice, as value noise has, so contours bend where the ground does.
// The quintic has a continuous second derivative, without which they would show kinks.
float3 noise(float2 p) {
    float2 i = floor(p);
    float2 f = p - i;
    float2 w = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
    float2 dw = 30.0 * f * f * (f * (f - 2.0) + 1.0);
    float2 lo = wrap(i);
    float2 hi = wrap(i + 1.0);
    float2 ga = slopeAt(lo);
    float2 gb = slopeAt(float2(hi.x, lo.y));
    float2 gc = slopeAt(float2(lo.x, hi.y));
    float2 gd = slopeAt(hi);
    float a = dot(ga, f);
    float b = dot(gb, f - float2(1.0, 0.0));
    float c = dot(gc, f - float2(0.0, 1.0));
    float d = dot(gd, f - 1.0);
    float2 along = float2(mix(b - a, d - c, w.y), mix(c - a, d - b, w.x));
    float2 slope = mix(mix(ga, gb, w.x), mix(gc, gd, w.x), w.y) + dw * along;
    return float3(mix(mix(a, b, w.x), mix(c, d, w.x), w.y), slope);
}

// Height of the ground, 0 to 1, and its gradient. Every octave slides on a small orbit of its own,
// so the ground changes for ever and never wanders off.
float3 ground(float2 p, float t) {
    float3 sum = float3(0.52, 0.0, 0.0);
    float weight = 0.62;
    float pitch = 1.0;
    // (c, s) turns the lattice of each octave by 37 degrees against the last.
    float c = 1.0;
    float s = 0.0;
    for (int i = 0; i < 4; ++i) {
        float n = float(i);
        float a = kTwoPi * (fract(t * (0.0023 + 0.0011 * n)) + 0.31 * n);
        float2 q = pitch * float2(c * p.x + s * p.y, c * p.y - s * p.x);
        float3 v = noise(q + (0.55 + 0.12 * n) * float2(cos(a), sin(a)) + 17.3 * n + 3.1);
        sum.x += weight * v.x;
        sum.yz += weight * pitch * float2(c * v.y - s * v.z, s * v.y + c * v.z);
        float turned = 0.799 * c - 0.602 * s;
        s = 0.602 * c + 0.799 * s;
        c = turned;
        pitch *= 2.03;
        weight *= 0.37;
    }
    return sum;
}

// Coverage of a line `width` pixels wide at `distance` pixels from its middle.
float ink(float distance, float width) { return saturate(0.5 * width + 0.5 - distance); }

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 screen = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float scale = 2.2 / max(u.params.x, 0.05);
    float2 p = screen * scale;
    float t = u.time * u.speed;
    // Map units a pixel; lines keep their weight in proportion from 360 lines up to 2160.
    float pixel = scale / u.resolution.y;
    float pen = clamp(u.resolution.y / 900.0, 0.75, 2.6);

    float3 g = ground(p, t);
    float slope = max(length(g.yz), 0.02);
    float above = g.x - 0.40 - u.params.w;

    float high = saturate(above / 0.42);
    float3 hue = mix(u.color2.rgb, u.color3.rgb, smoothstep(0.0, 0.45, high));
    hue = mix(hue, u.color1.rgb, smoothstep(0.35, 0.9, high));

    // Contours: the distance to a level, in pixels, is the height to it over the slope.
    float interval = 0.026 / (1.0 + u.params.y);
    float level = above / interval;
    float whole = floor(level + 0.5);
    float away = abs(level - whole) * interval / (slope * pixel);
    float isIndex = 1.0 - step(0.5, abs(whole - 5.0 * floor(whole / 5.0 + 0.5)));
    float room = smoothstep(2.2, 5.0, interval / (slope * pixel));
    float under = step(above, -0.5 * interval);

    float thin = ink(away, pen) * mix(0.25, 1.0, room) * mix(0.62, 0.22, under);
    float thick = isIndex * ink(away, 1.5 * pen) * mix(1.0, 0.28, under);
    float glow = isIndex * exp(-away / (4.5 * pen)) * (1.0 + u.params.z) * mix(0.26, 0.05, under);
    float3 colour = u.background.rgb * (0.7 + 0.5 * mix(high, 0.0, under));
    colour += hue * 0.05 * high;

    // A soft light from the north-west lifts the relief out of the dark.
    float3 n = normalize(float3(-g.yz * 0.55, 1.0));
    float facing = saturate(dot(n, normalize(float3(-0.6, -0.6, 0.75))) - 0.60);
    colour += hue * facing * 0.16 * (1.0 - under);
    colour += hue * (thin + thick + glow);

    // Small crosses where the grid's lines would meet.
    float2 cell = abs(fract(screen * 4.0 + 0.5) - 0.5) * u.resolution.y / 4.0;
    float arm = 5.0 * pen;
    float plus =
        max(ink(cell.x, 0.8 * pen) * step(cell.y, arm), ink(cell.y, 0.8 * pen) * step(cell.x, arm));
    colour += float3(0.55, 0.65, 0.8) * plus * 0.22;
    colour *= 1.0 - 0.35 * dot(screen, screen);

    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
