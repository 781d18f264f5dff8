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

// Relief seen obliquely: the ground cut into sheets, stacked, lit from the left.
//
// slot        what it does                                   useful range   default
// color1      colour of the highest sheets                   any            violet
// color2      colour of the middle sheets                    any            cyan
// color3      colour of the lowest sheets                    any            blue
// background  colour of the depth between the sheets         dark           near black
// params.x    scale of the ground                            0.5 .. 2       1
// params.y    height of the relief                           -0.7 .. 1      0
// params.z    depth of the shadows                           -1 .. 0.6      0
// params.w    turn of the ground, in turns                   0 .. 1         0

constant float kTwoPi = 6.2831853;
constant int kSheets = 16;
constant int kPart = 4; // steps of the walk to a sheet
constant int kSteps = 64;
constant float kStride = float(kSteps) / 5.0; // steps to a unit of height, safely
constant float2 kToLight = float2(-0.15, -0.06);

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

float2 wrap(float2 cell) { return cell - 128.0 * floor(cell / 128.0); }

// Value noise and its gradient, (value, d/dx, d/dy).
float3 noise(float2 p) {
    float2 i = floor(p);
    float2 f = p - i;
    float2 w = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
    float2 dw = 30.0 * f * f * (f * (f - 2.0) + 1.0);
    float2 lo = wrap(i);
    float2 hi = wrap(i + 1.0);
    float a = hash(lo);
    float b = hash(float2(hi.x, lo.y));
    float c = hash(float2(lo.x, hi.y));
    float d = hash(hi);
    float2 slope = float2(mix(b - a, d - c, w.y), mix(c - a, d - b, w.x));
    return float3(mix(mix(a, b, w.x), mix(c, d, w.x), w.y), dw * slope);
}

// Height of the ground, 0 to 1, and its gradient. Both orbits are worked out once for the picture.
float3 ground(float2 p, float4 orbit) {
    float3 v = noise(p + orbit.xy + 3.1);
    float3 sum = float3(0.07, 0.0, 0.0) + 0.60 * v;
    // Each octave's lattice is turned by 37 degrees against the last.
    float2 q = float2(1.66 * p.x + 1.25 * p.y, 1.66 * p.y - 1.25 * p.x);
    v = noise(q + orbit.zw + 20.4);
    sum += 0.24 * float3(v.x, 1.66 * v.y - 1.25 * v.z, 1.25 * v.y + 1.66 * v.z);
    q = float2(1.20 * p.x + 4.15 * p.y, 1.20 * p.y - 4.15 * p.x);
    v = noise(q - orbit.xy + 37.7);
    sum += 0.05 * float3(v.x, 1.20 * v.y - 4.15 * v.z, 4.15 * v.y + 1.20 * v.z);
    return sum;
}

// Colour of a sheet by the height of its top.
float3 sheetColour(float top, constant Uniforms& u) {
    float3 hue = mix(u.color3.rgb, u.color2.rgb, smoothstep(0.14, 0.48, top));
    return mix(hue, u.color1.rgb, smoothstep(0.44, 0.80, top));
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 screen = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float t = u.time * u.speed;
    float scale = 2.4 / max(u.params.x, 0.05);
    float pixel = scale / u.resolution.y;

    float a = kTwoPi * fract(t * 0.0031);
    float b = kTwoPi * fract(t * 0.0043);
    float4 orbit = float4(0.8 * cos(a), 0.8 * sin(a), 0.5 * sin(b), 0.5 * cos(b));
    float turn = -0.42 + kTwoPi * u.params.w;
    float c = cos(turn);
    float s = sin(turn);

    // Seen from 38 degrees above: depth along the ground is foreshortened by the sine of that,
    // 0.62, and a lifted sheet moves up the screen.
    float2 base = scale * float2(screen.x, screen.y / 0.62);
    float rise = scale * 0.44 * (1.0 + u.params.y) / 0.62;
    float2 l = float2(c * kToLight.x + s * kToLight.y, c * kToLight.y - s * kToLight.x);

    // Walk down the line of sight, four steps to a sheet: the first where it meets the plane of the
    // sheet's top, the others along its wall. Outlines cover a pixel in part where they cross it.
    // Where the ground lies far below, several steps are taken at once: a step along the ground
    // changes its height by no more than about three times what the step descends. Between two
    // steps down the same wall the ground is taken for a parabola, so that walls are smooth however
    // few the steps are.
    float3 colour = float3(0.0);
    float through = 1.0;
    int i = kSteps;
    float2 down = float2(s, c) * (-rise / float(kSteps));
    int before = kSteps; // the step before, and the ground there
    float3 groundBefore = float3(0.0);
    while (i > 0) {
        int sheet = (i + kPart - 1) / kPart;
        float top = float(sheet) / float(kSheets);
        float z = float(i) / float(kSteps);
        float2 g = base + float2(0.0, rise * (z - 0.42));
        float2 at = float2(c * g.x + s * g.y, c * g.y - s * g.x);
        float3 h = ground(at, orbit);
        float slope = max(length(h.yz), 0.05);
        float height = h.x;
        float2 uphill = h.yz;
        float since = 0.0; // steps since the line of sight met the wall
        if (kPart * sheet != i) {
            float taken = float(before - i);
            float rise0 = dot(groundBefore.yz, down);
            float rise1 = dot(h.yz, down);
            if (rise0 > 0.0 && rise1 < 0.0) {
                height = groundBefore.x + 0.5 * taken * rise0 * rise0 / (rise0 - rise1);
                // On the crest the ground falls to the sides alone.
                slope = max(abs(h.y * down.y - h.z * down.x) / length(down), 0.02);
            }
            float share = saturate((height - top) / max(height - groundBefore.x, 0.0001));
            uphill = mix(h.yz, groundBefore.yz, share);
            since = taken * share;
        }
        before = i;
        groundBefore = h;
        float inside = (height - top) / slope;
        float cover = saturate(0.5 + inside / (1.25 * pixel));
        if (cover > 0.0) {
            float3 hue = sheetColour(top, u);
            float3 seen;
            if (kPart * sheet == i) {
                // A top. The sheets towards the light throw a soft shadow on it, its foot is dim
                // where the next one stands on it, and its edge is bright.
                float next = top + 1.0 / float(kSheets);
                float close =
                    smoothstep(next - 0.003, next + 0.010, ground(at + 0.40 * l, orbit).x);
                float far = smoothstep(next - 0.004, next + 0.045, ground(at + l, orbit).x);
                float shadow = max(close, 0.85 * far) * (0.62 + 0.6 * u.params.z);
                float foot = smoothstep(next - 0.016, next, h.x);
                float edge = saturate(1.5 - inside / max(1.6 * pixel, 0.006));
                seen = hue * (0.26 + 0.66 * top) * (1.0 - shadow) * (1.0 - 0.14 * foot);
                seen += (hue + 0.12) * edge * (0.30 - 0.24 * shadow);
            } else {
                // A wall: facing the light or turned from it, darker towards its foot.
                float deep = max(float(kPart * sheet - i) - since, 0.0) / float(kPart);
                float2 n = -uphill / max(length(uphill), 0.05);
                float facing = saturate(0.5 + 0.5 * dot(n, l) / length(l));
                seen = mix(u.background.rgb, hue, (0.16 + 0.30 * facing) * (1.0 - 0.55 * deep));
                seen *= 0.5 + 0.6 * top;
            }
            colour += through * cover * seen;
            through *= 1.0 - cover;
            if (through < 0.01) {
                break;
            }
        }
        i -= 1 + int(max(top - h.x - 0.02, 0.0) * kStride);
    }
    colour += through * u.background.rgb;
    colour *= 1.0 - 0.25 * dot(screen, screen);
    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
