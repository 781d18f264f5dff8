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
// params.z    contrast of the light                          -0.5 .. 0.5    0
// params.w    turn of the ground, in turns                   0 .. 1         0

constant float kTwoPi = 6.2831853;
constant int kSheets = 14;
constant float2 kToLight = float2(-0.13, -0.05);

float hash(float2 p) {
    return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453);
}

float2 wrap(float2 cell) {
    return cell - 128.0 * floor(cell / 128.0);
}

float noise(float2 p) {
    float2 i = floor(p);
    float2 f = p - i;
    f = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
    float2 a = wrap(i);
    float2 b = wrap(i + 1.0);
    return mix(mix(hash(a), hash(float2(b.x, a.y)), f.x),
               mix(hash(float2(a.x, b.y)), hash(b), f.x), f.y);
}

// Height of the ground, 0 to 1. The two orbits are worked out once for the picture.
float ground(float2 p, float4 orbit) {
    float h = 0.60 * noise(p + orbit.xy + 3.1);
    float2 q = float2(1.66 * p.x + 1.25 * p.y, 1.66 * p.y - 1.25 * p.x);
    h += 0.22 * noise(q + orbit.zw + 20.4);
    return 0.08 + h + 0.06 * noise(2.1 * q - orbit.xy + 37.7);
}

// Colour of a sheet by the height of its top.
float3 sheetColour(float top, constant Uniforms& u) {
    float3 hue = mix(u.color3.rgb, u.color2.rgb, smoothstep(0.12, 0.48, top));
    return mix(hue, u.color1.rgb, smoothstep(0.42, 0.78, top));
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 screen = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float t = u.time * u.speed;
    float scale = 2.5 / max(u.params.x, 0.05);

    float a = kTwoPi * fract(t * 0.0031);
    float b = kTwoPi * fract(t * 0.0043);
    float4 orbit = float4(0.8 * cos(a), 0.8 * sin(a), 0.5 * sin(b), 0.5 * cos(b));
    float turn = -0.42 + kTwoPi * u.params.w;
    float c = cos(turn);
    float s = sin(turn);

    // Seen from 38 degrees above: depth along the ground is foreshortened by the sine of that, 0.62,
    // and a lifted sheet moves up the screen.
    float2 base = scale * float2(screen.x, screen.y / 0.62);
    float rise = scale * 0.42 * (1.0 + u.params.y) / 0.62;

    // Walk down the line of sight, three steps to a sheet: the first where it leaves a sheet's top
    // plane, the others along the wall. The first sheet whose outline holds the point is seen.
    int seen = 0;
    float2 at = float2(0.0);
    float h = 0.0;
    for (int i = 3 * kSheets; i > 0; --i) {
        float z = float(i) / float(3 * kSheets);
        float2 g = base + float2(0.0, rise * (z - 0.42));
        at = float2(c * g.x + s * g.y, c * g.y - s * g.x);
        h = ground(at, orbit);
        if (h >= float((i + 2) / 3) / float(kSheets)) {
            seen = i;
            break;
        }
    }

    float3 colour = u.background.rgb;
    if (seen > 0) {
        int sheet = (seen + 2) / 3;
        float top = float(sheet) / float(kSheets);
        float3 hue = sheetColour(top, u);
        if (3 * sheet == seen) {
            // A top: the sheets towards the light throw a soft shadow on it, and its edge is bright.
            float above = top + 1.0 / float(kSheets);
            float2 l = float2(c * kToLight.x + s * kToLight.y, c * kToLight.y - s * kToLight.x);
            float nearBy = smoothstep(above - 0.010, above + 0.012, ground(at + 0.45 * l, orbit));
            float far = smoothstep(above - 0.010, above + 0.040, ground(at + l, orbit));
            float shadow = max(nearBy, far);
            float contact = smoothstep(above - 0.030, above, h);
            float edge = smoothstep(0.012, 0.004, h - top);
            float light = (1.0 - (0.55 + 0.4 * u.params.z) * shadow) * (1.0 - 0.25 * contact);
            colour = hue * (0.32 + 0.62 * top) * light + hue * edge * 0.30 * (1.0 - 0.6 * shadow);
        } else {
            float deep = float(3 * sheet - seen) / 3.0;
            colour = mix(u.background.rgb, hue, 0.34 - 0.22 * deep) * (0.5 + 0.5 * top);
        }
    }
    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
