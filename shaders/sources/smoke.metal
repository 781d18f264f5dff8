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

// Smoke that curls and drifts through two lights: a key from the upper left, a fill from the right.
//
// slot        what it does                                   useful range   default
// color1      colour of the key light                        any            violet
// color2      colour of the fill light                       any            cyan
// color3      colour of the shadows inside the smoke         any            blue
// background  colour of the dark behind the smoke            dark           near black
// params.x    size of the billows                            0.5 .. 2       1
// params.y    more smoke (above 0) or less (below)           -0.5 .. 0.5    0
// params.z    colour of the lights: -1 is white light        -1 .. 1        0
// params.w    strength of the lights                         -0.5 .. 1      0

constant float kTwoPi = 6.2831853;
constant int kSheets = 4; // depth of the volume, nearest first

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

// Value noise with its gradient: (value, d/dx, d/dy). The lattice wraps every 64 cells, which keeps
// the sine's argument small.
float3 noise(float2 p) {
    float2 i = floor(p);
    float2 f = p - i;
    float2 w = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
    float2 dw = 30.0 * f * f * (f * (f - 2.0) + 1.0);
    float2 lo = i - 64.0 * floor(i / 64.0);
    float2 hi = lo + 1.0;
    hi -= 64.0 * floor(hi / 64.0);
    float a = hash(lo);
    float b = hash(float2(hi.x, lo.y));
    float c = hash(float2(lo.x, hi.y));
    float d = hash(hi);
    float2 slope = float2(mix(b - a, d - c, w.y), mix(c - a, d - b, w.x));
    return float3(mix(mix(a, b, w.x), mix(c, d, w.x), w.y), dw * slope);
}

// A fractal sum about 0 with its gradient; each octave is turned so that the lattice cannot be
// seen.
float3 billows(float2 p, int octaves, float gain) {
    float3 sum = float3(0.0);
    float weight = 0.5;
    float c = 1.0;
    float s = 0.0;
    for (int i = 0; i < octaves; ++i) {
        float n = float(i);
        float3 v = noise(float2(c * p.x + s * p.y, c * p.y - s * p.x) + 7.3 * n);
        sum += weight * float3(v.x - 0.5, c * v.y - s * v.z, s * v.y + c * v.z);
        float turned = 1.58 * c - 1.22 * s;
        s = 1.22 * c + 1.58 * s;
        c = turned;
        weight *= gain;
    }
    return sum;
}

// A point that circles slowly about its start; motion that never runs away.
float2 orbit(float t, float rate, float start, float size) {
    float a = kTwoPi * (fract(t * rate) + start);
    return size * float2(cos(a), sin(a));
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 screen = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float t = u.time * u.speed;

    // The air travels on a circle so wide that it reads as a straight drift upwards.
    float2 p = screen * (1.5 / max(u.params.x, 0.05)) + orbit(t, 0.0006, 0.0, 11.0);

    // Smoke is folded by the air that carries it: the plane is bent by a field that was itself
    // bent. Beside each bent point go its two derivatives (how its x and its y follow p), so that
    // the smoke's slope towards the lights is exact.
    float3 foldX = billows(p * 0.9 + orbit(t, 0.011, 0.1, 0.5), 3, 0.5);
    float3 foldY = billows(p * 0.9 + 19.7 + orbit(t, 0.009, 0.6, 0.5), 3, 0.5);
    float2 fold = float2(foldX.x, foldY.x);
    float2 dx = float2(1.0, 0.0) + 0.9 * 0.9 * foldX.yz;
    float2 dy = float2(0.0, 1.0) + 0.9 * 0.9 * foldY.yz;
    float2 bent = p + 0.9 * fold;
    float3 curlX = billows(bent * 1.9 + 41.3 + orbit(t, 0.014, 0.3, 0.45), 3, 0.5);
    float3 curlY = billows(bent * 1.9 + 7.9 + orbit(t, 0.012, 0.8, 0.45), 3, 0.5);
    float2 curl = float2(curlX.x, curlY.x);
    float2 dCurlX = 1.9 * (curlX.y * dx + curlX.z * dy);
    float2 dCurlY = 1.9 * (curlY.y * dx + curlY.z * dy);

    float3 key = mix(float3(0.95, 0.93, 0.98), u.color1.rgb, saturate(0.62 + 0.62 * u.params.z));
    float3 fill = mix(float3(0.80, 0.90, 1.00), u.color2.rgb, saturate(0.75 + 0.75 * u.params.z));
    float3 ambient = mix(float3(0.5), u.color3.rgb, saturate(0.60 + 0.6 * u.params.z)) * 0.10;
    float strength = 1.0 + u.params.w;
    // The lights stand near the edges of the picture, whatever its shape.
    float edge = 0.5 * u.resolution.x / u.resolution.y;
    float keyReach = exp(-1.15 * length(screen - float2(-0.62 * edge, -0.50)));
    float fillReach = exp(-1.5 * length(screen - float2(0.96 * edge, 0.30)));

    // From the nearest sheet to the furthest. They share the folds but not the smoke in them, so
    // one shows through the other; the further, the softer.
    float3 colour = float3(0.0);
    float through = 1.0;
    for (int i = 0; i < kSheets; ++i) {
        float n = float(i);
        float bend = 0.52 - 0.08 * n;
        float pitch = 0.95 + 0.12 * n;
        float2 q = pitch * (bent + bend * curl) + float2(3.7, -5.9) * n;
        float3 v = billows(q, 5, 0.43);
        float2 slope = pitch * (v.y * (dx + bend * dCurlX) + v.z * (dy + bend * dCurlY));
        float body = v.x + 0.5 * u.params.y - 0.015 * n;
        float wisp = smoothstep(-0.03, 0.30, body);
        float opacity = wisp * (0.20 + 0.55 * wisp);
        float lit = 0.48 - 0.75 * dot(slope, float2(-0.64, -0.77));
        float side = 0.36 - 0.75 * dot(slope, float2(0.98, 0.20));
        // Thick smoke shades itself; thin edges pass the light on.
        float inside = 1.0 - 0.45 * wisp;
        lit = smoothstep(0.0, 1.0, lit);
        side = smoothstep(0.05, 1.0, side);
        float3 light = key * lit * (0.60 + 3.6 * keyReach) * strength +
                       fill * side * (0.30 + 3.0 * fillReach) * strength;
        colour += through * opacity * (ambient + light * inside * (1.0 - 0.18 * n));
        through *= 1.0 - opacity;
    }
    float3 behind = u.background.rgb * 0.8;
    behind += (key * 0.06 * keyReach * keyReach + fill * 0.03 * fillReach) * strength;
    colour += through * behind;
    colour = 1.0 - exp(-1.5 * colour);

    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
