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

// The Milky Way across a dark sky: the band, its rifts of dust, and stars as dense as the band.
//
// slot        what it does                                   useful range   default
// color1      tints the band's clouds, by params.z           any            violet
// color2      tints the glow around the band, by params.z    any            cyan
// color3      tints the sky beside the band, by params.z     any            blue
// background  colour of the dark sky                         dark           near black
// params.x    width of the band                              0.5 .. 2       1
// params.y    more dust (above 0) or less (below)            -0.5 .. 0.5    0
// params.z    0 natural colours, 1 the palette               0 .. 1         0
// params.w    tilt of the band, in turns                     -0.25 .. 0.25  0

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

// Fractal sum of six octaves about 0.5; each is turned so that the lattice cannot be seen.
float cloud(float2 p) {
    float sum = 0.0;
    float weight = 0.5;
    for (int i = 0; i < 6; ++i) {
        sum += weight * noise(p);
        p = float2(1.58 * p.x + 1.25 * p.y, 1.58 * p.y - 1.25 * p.x) + 11.7;
        weight *= 0.52;
    }
    return sum;
}

// Stars of one size class, at most one to a cell; share is how many cells hold one. None is narrower
// than `least`, about a pixel squared: the sky turns, and a finer one would flicker from pixel to
// pixel. Its light stays the same.
float3 stars(float2 pixel, float cellSize, float share, float spread, float least, float t) {
    float2 cell = floor(pixel / cellSize);
    float2 local = pixel - cell * cellSize;
    float2 id = wrap(cell);
    float2 d = local - cellSize * (0.16 + 0.68 * float2(hash(id + 0.31), hash(id + 0.73)));
    float magnitude = hash(id + 0.57);
    float power = step(hash(id + 0.91), share) * (0.10 + 0.9 * pow(magnitude, 4.0));
    power *= 1.0 + 0.22 * sin(kTwoPi * (fract(t * 0.31) + magnitude * 7.0)) * magnitude;
    float warmth = hash(id + 0.13);
    float3 colour = mix(float3(0.62, 0.76, 1.0), float3(1.0, 0.96, 0.90), saturate(warmth * 2.0));
    colour = mix(colour, float3(1.0, 0.66, 0.40), saturate(warmth * 4.0 - 3.0));
    float size = spread * (0.35 + magnitude * magnitude);
    float wide = max(size, least);
    return colour * (power * size / wide) * exp(-dot(d, d) / wide);
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float t = u.time * u.speed;

    // x runs along the band and y across it. The sky turns, but so little that it seems to sway.
    float turn = 0.06 * sin(kTwoPi * fract(t * 0.0047));
    float angle = -0.56 + kTwoPi * u.params.w + turn;
    float c = cos(angle);
    float s = sin(angle);
    float2 b = float2(c * p.x + s * p.y, c * p.y - s * p.x);
    float2 sway = 0.16 * float2(sin(kTwoPi * fract(t * 0.0083)), cos(kTwoPi * fract(t * 0.0071)));

    float width = max(u.params.x, 0.1);
    float bend = 0.10 * (cloud(b * 1.2 + 5.0) - 0.5) + 0.03 * sin(b.x * 2.1);
    float across = (b.y + bend) / width;
    float bulge = exp(-(b.x - 0.12) * (b.x - 0.12) * 2.6);

    float haze = exp(-across * across * 13.0);
    float spine = exp(-across * across * (70.0 - 34.0 * bulge));
    float2 warp = float2(cloud(b * 2.4 + 2.0 + sway), cloud(b * 2.4 + 23.0 - sway)) - 0.5;
    float clouds = cloud(b * float2(2.6, 4.2) + warp * 1.6 + 9.0);
    float light = haze * 0.34 + spine * (0.55 + 0.85 * bulge);
    light *= 0.35 + 1.35 * smoothstep(0.25, 0.8, clouds);

    // The great rift: dust along the middle, breaking up into feathers on both sides.
    float2 dq = b * float2(2.0, 4.4) + warp * 2.0;
    float rift = 0.5 + 0.85 * (cloud(dq + 51.0) - 0.5);
    float vein = across - 0.012 + 0.10 * warp.x;
    float lane = exp(-vein * vein * 420.0) * 0.22 + exp(-across * across * 14.0) * 0.06;
    float dust = smoothstep(0.53 - u.params.y, 0.80 - u.params.y, rift + lane);
    dust *= smoothstep(0.02, 0.35, haze);

    float3 cream = mix(float3(1.0, 0.90, 0.76), u.color1.rgb, u.params.z);
    float3 cool = mix(float3(0.56, 0.64, 0.86), u.color2.rgb, u.params.z);
    float3 sky = u.background.rgb * 0.6;
    sky += mix(float3(0.010, 0.014, 0.026), u.color3.rgb * 0.05, u.params.z);
    float3 colour = sky + mix(cool, cream, saturate(spine * 0.8 + bulge * 0.35)) * light * 0.62;
    // A few clouds of hydrogen glow along the spine.
    float rose = smoothstep(0.60, 0.76, cloud(b * 5.0 + 71.0)) * spine;
    colour += float3(0.75, 0.16, 0.26) * rose * 0.35;
    colour *= exp(-dust * float3(1.5, 1.85, 2.15));

    // Faint stars crowd the band and thin out behind the dust; bright ones stand in front of it.
    float crowd = saturate(0.10 + 0.55 * haze * (0.4 + clouds) + 0.4 * spine);
    float clear = exp(-dust * 2.2);
    // Stars keep their look from a thumbnail to a wall: their size follows the height of the
    // display. They turn with the band.
    float grow = clamp(u.resolution.y / 900.0, 0.7, 3.0);
    float least = 0.55 / (grow * grow);
    float2 px = p * u.resolution.y / grow;
    px = float2(cos(turn) * px.x + sin(turn) * px.y, cos(turn) * px.y - sin(turn) * px.x);
    float3 field = stars(px, 4.0, crowd * clear * 0.75, 0.55, least, t) * 0.75;
    field += stars(px + 37.0, 7.0, crowd * (0.3 + 0.7 * clear), 0.7, least, t) * 1.0;
    field += stars(px + 91.0, 15.0, 0.18 + 0.3 * crowd, 1.0, least, t) * 1.1;
    field += stars(px + 203.0, 61.0, 0.34, 2.4, least, t) * 1.6;
    colour += field;

    colour = 1.0 - exp(-1.45 * colour);
    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
