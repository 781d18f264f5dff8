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

// An emission nebula: glowing gas, dust lanes in front of it and the young stars that light it.
//
// slot        what it does                                   useful range   default
// color1      replaces hydrogen's rose, by params.z          any            violet
// color2      replaces oxygen's teal, by params.z            any            cyan
// color3      tints the faint outer gas                      any            blue
// background  colour of the empty sky                        dark           near black
// params.x    magnification                                  0.5 .. 2       1
// params.y    more dust (above 0) or less (below)            -0.5 .. 0.5    0
// params.z    0 natural colours, 1 the palette               0 .. 1         0
// params.w    brightness of the gas                          -0.5 .. 1      0

constant float kTwoPi = 6.2831853;

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

float2 wrap(float2 cell) { return cell - 128.0 * floor(cell / 128.0); }

float noise(float2 p) {
    float2 i = floor(p);
    float2 f = p - i;
    f = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
    float2 a = wrap(i);
    float2 b = wrap(i + 1.0);
    return mix(mix(hash(a), hash(float2(b.x, a.y)), f.x), mix(hash(float2(a.x, b.y)), hash(b), f.x),
               f.y);
}

// Fractal sum of five octaves about 0.5; each is turned so that the lattice cannot be seen.
float cloud(float2 p) {
    float sum = 0.0;
    float weight = 0.5;
    for (int i = 0; i < 5; ++i) {
        sum += weight * noise(p);
        p = float2(1.62 * p.x + 1.19 * p.y, 1.62 * p.y - 1.19 * p.x) + 11.7;
        weight *= 0.5;
    }
    return sum;
}

// Filaments: bright where the noise crosses its middle.
float filaments(float2 p) {
    float sum = 0.0;
    float weight = 0.55;
    for (int i = 0; i < 5; ++i) {
        float n = 1.0 - abs(2.0 * noise(p) - 1.0);
        sum += weight * n * n;
        p = float2(1.66 * p.x - 1.15 * p.y, 1.66 * p.y + 1.15 * p.x) + 4.1;
        weight *= 0.5;
    }
    return sum;
}

// Stars of one size class. Their brightness spans several magnitudes, and few are bright.
float3 stars(float2 pixel, float cellSize, float share, float t) {
    float2 cell = floor(pixel / cellSize);
    float2 local = pixel - cell * cellSize;
    float2 id = wrap(cell);
    float2 d = local - cellSize * (0.16 + 0.68 * float2(hash(id + 0.31), hash(id + 0.73)));
    float magnitude = hash(id + 0.57);
    float power = step(hash(id + 0.91), share) * (0.08 + 0.9 * pow(magnitude, 5.0));
    power *= 1.0 + 0.15 * sin(kTwoPi * (fract(t * 0.23) + magnitude * 7.0));
    float warmth = hash(id + 0.13);
    float3 colour = mix(float3(0.66, 0.78, 1.0), float3(1.0, 0.82, 0.62), warmth * warmth);
    return colour * power * exp(-dot(d, d) / (0.45 + 0.8 * magnitude * magnitude));
}

// A young star: a hard core, a soft halo in the gas and four faint spikes of the telescope.
float3 young(float2 d, float power) {
    float r2 = dot(d, d);
    float core = 0.0000075 * power / (r2 + 0.0000028);
    float halo = 0.0019 * power / (r2 + 0.0035);
    float2 a = abs(d);
    float spikes =
        0.00022 * power * (exp(-a.y * 900.0) / (a.x + 0.004) + exp(-a.x * 900.0) / (a.y + 0.004));
    return float3(0.82, 0.9, 1.0) * (core + spikes * exp(-r2 * 300.0)) +
           float3(0.62, 0.68, 1.0) * halo;
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 screen = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float2 p = screen / max(u.params.x, 0.05);
    float t = u.time * u.speed;

    // Gas is far too large to be seen moving, but it may breathe: two layers slide on small orbits.
    float a = kTwoPi * fract(t * 0.0061);
    float2 slide = 0.45 * float2(cos(a), sin(a));
    float2 heart = p - float2(0.07, -0.03);

    float2 bend = float2(cloud(p * 1.7 + 3.1 + slide), cloud(p * 1.7 + 17.3 - slide)) - 0.5;
    float2 q = p * 2.1 + bend * 2.2;
    float gas = cloud(q + 5.0);
    float fine = filaments(q * 1.15 + 31.0 + 0.3 * slide);
    float shell = cloud(p * 1.35 + bend * 1.1 + 40.0);

    float reach = length(heart * float2(0.92, 1.15) + bend * 0.34);
    float cavity = exp(-reach * reach * 9.0);
    float body = smoothstep(0.95, 0.05, reach) * smoothstep(0.26, 0.78, gas);

    float3 hydrogen = mix(float3(0.98, 0.22, 0.34), u.color1.rgb, u.params.z);
    float3 oxygen = mix(float3(0.20, 0.78, 0.80), u.color2.rgb, u.params.z);
    float3 outer = mix(float3(0.42, 0.14, 0.34), u.color3.rgb, 0.35 + 0.65 * u.params.z);

    float bright = 1.0 + u.params.w;
    float3 colour = u.background.rgb * 0.55;
    colour += outer * 0.36 * smoothstep(0.30, 0.85, shell) * smoothstep(1.25, 0.2, reach) * bright;
    colour += hydrogen * body * (0.26 + 1.7 * fine * fine) * bright;
    colour += oxygen * cavity * (0.10 + 1.0 * gas * gas + 0.75 * fine * fine) * bright;
    colour += float3(1.0, 0.86, 0.80) * 0.85 * pow(cavity, 6.0) * (0.25 + gas) * bright;

    // Dust lies in front: it dims the blue most, and its edges towards the heart catch the light.
    float2 dq = p * 1.55 + bend * 1.5 + float2(8.4, 2.2) - 0.5 * slide;
    float lanes = cloud(dq) + 0.35 * (filaments(dq * 1.3 + 9.0) - 0.4);
    float dust = smoothstep(0.52 - u.params.y, 0.78 - u.params.y, lanes);
    dust *= 1.0 - 0.80 * exp(-reach * reach * 16.0);
    float rim = dust * (1.0 - dust) * 4.0 * exp(-reach * 2.6);
    colour *= exp(-dust * float3(1.9, 2.5, 2.9));
    colour += float3(0.50, 0.22, 0.12) * rim * 0.16 * bright;

    // Stars keep their look from a thumbnail to a wall: their size follows the height of the
    // display.
    float2 sky = in.position.xy / clamp(u.resolution.y / 900.0, 0.7, 3.0);
    float3 field = stars(sky, 7.0, 0.16, t) + 1.5 * stars(sky + 77.0, 29.0, 0.45, t);
    colour += field * exp(-dust * 2.6) * (1.0 - 0.55 * saturate(body));

    // The cluster at the heart, and one star that has left it.
    colour += young(heart - float2(0.012, 0.004), 1.0) + young(heart + float2(0.018, 0.013), 0.55);
    colour +=
        young(heart + float2(-0.006, 0.024), 0.35) + young(heart - float2(0.030, -0.020), 0.25);
    colour += young(heart - float2(-0.33, 0.21), 0.55) + young(heart - float2(0.42, -0.17), 0.3);

    colour = 1.0 - exp(-1.35 * colour);
    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
