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

// A banded giant: belts and zones that slide past each other, storms, and a great oval.
//
// slot        what it does                                   useful range   default
// color1      replaces the belts' rust, by params.z          any            violet
// color2      replaces the zones' cream, by params.z         any            cyan
// color3      colour of the light along the night limb       any            blue
// background  colour of space                                dark           near black
// params.x    size of the disc                               0.5 .. 1.8     1
// params.y    turn of the sun, in turns                      -0.2 .. 0.2    0
// params.z    0 natural colours, 1 the palette               0 .. 1         0
// params.w    unrest of the clouds                           -0.6 .. 1      0

constant float kTwoPi = 6.2831853;

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

// Noise on the unrolled globe: x wraps after `around` cells, so that there is no seam of longitude.
float noise(float2 p, float around) {
    float2 i = floor(p);
    float2 f = p - i;
    f = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
    float x0 = i.x - around * floor(i.x / around);
    float x1 = i.x + 1.0 - around * floor((i.x + 1.0) / around);
    float y0 = i.y + 64.0;
    return mix(mix(hash(float2(x0, y0)), hash(float2(x1, y0)), f.x),
               mix(hash(float2(x0, y0 + 1.0)), hash(float2(x1, y0 + 1.0)), f.x), f.y);
}

// Cloud texture at longitude p.x (turns) and latitude p.y: streaks drawn out along the wind.
// `pixel` is the height of a pixel in p.y; octaves too fine for it fade to their mean.
float streaks(float2 p, float2 warp, float pixel) {
    float2 q = float2(fract(p.x) * 12.0, p.y * 9.0) + warp;
    float cells = 9.0 * pixel;
    float sum = 0.0;
    float weight = 0.5333;
    float around = 12.0;
    for (int i = 0; i < 4; ++i) {
        float visible = saturate(1.6 - 2.0 * cells);
        sum += weight * mix(0.5, noise(q, around), visible);
        q = float2(q.x * 2.0, q.y * 2.0 + 7.7);
        around *= 2.0;
        cells *= 2.0;
        weight *= 0.5;
    }
    return sum;
}

// Brightness of the zones by latitude, -1 in the darkest belt to 1 in the brightest zone.
float bands(float y) {
    return 0.55 * sin(y * 13.0 + 0.9) + 0.30 * sin(y * 23.0 + 2.1) + 0.22 * sin(y * 41.0 + 0.4);
}

// One layer of stars, at most one to a cell; share is how many cells hold one.
float stars(float2 pixel, float cellSize, float share) {
    float2 cell = floor(pixel / cellSize);
    float2 id = cell - 128.0 * floor(cell / 128.0);
    float2 d = pixel - (cell + 0.18 + 0.64 * float2(hash(id + 0.31), hash(id + 0.73))) * cellSize;
    float magnitude = hash(id + 0.57);
    float power = step(hash(id + 0.91), share) * (0.10 + 0.8 * pow(magnitude, 6.0));
    return power * exp(-dot(d, d) / (0.45 + 0.6 * magnitude * magnitude));
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float pixel = 1.0 / u.resolution.y;
    float t = u.time * u.speed;
    // On a tall display the disc shrinks to the width.
    float radius = 0.40 * max(u.params.x, 0.05) * min(1.0, 1.12 * u.resolution.x * pixel);

    // Stars keep their look from a thumbnail to a wall: their size follows the height of the
    // display.
    float2 sky = in.position.xy / clamp(u.resolution.y / 900.0, 0.7, 3.0);
    float3 colour = u.background.rgb * 0.35;
    colour +=
        float3(0.8, 0.87, 1.0) * (stars(sky, 11.0, 0.12) + 1.4 * stars(sky + 55.0, 37.0, 0.3));

    float a = 0.11; // the axis leans a little
    float2 d = float2(cos(a) * p.x + sin(a) * p.y, cos(a) * p.y - sin(a) * p.x) / radius;
    d.y *= 1.069; // the planet is flattened by its spin: polar radius 0.935 of the equator's
    float r2 = dot(d, d);
    float sun = -0.62 + kTwoPi * u.params.y;
    float3 toSun = normalize(float3(sin(sun), -0.18, cos(sun)));

    float edge = pixel / radius;
    float r = sqrt(r2);
    if (r < 1.0 + edge) {
        float z = sqrt(max(1.0 - r2, 0.0));
        float3 n = float3(d.x, d.y, z);
        float latitude = asin(clamp(-n.y, -1.0, 1.0));
        float longitude = atan2(n.x, max(n.z, 0.0001)) / kTwoPi;
        float spin = fract(t * 0.0083);
        float unrest = 1.0 + u.params.w;

        // The great oval turns in its own place and carries the clouds around it.
        float ovalAt = fract(longitude + spin * 1.0 + 0.5 - 0.12) - 0.5;
        float2 o = float2(ovalAt * kTwoPi * cos(latitude), latitude + 0.385) / float2(0.235, 0.125);
        float within = dot(o, o);
        float hold = exp(-within * 0.75);
        // The clouds behind it are torn up by its passage.
        float wake = smoothstep(-0.30, -0.06, ovalAt) * smoothstep(-0.005, -0.05, ovalAt);
        unrest *= 1.0 + 1.5 * wake * exp(-49.0 * (latitude + 0.36) * (latitude + 0.36));

        // Latitude waves and small vortices fray the edges of the bands.
        float lx = (longitude + spin) * kTwoPi;
        float wave =
            0.012 * sin(lx * 7.0 + latitude * 19.0) + 0.008 * sin(lx * 13.0 - latitude * 31.0);
        wave += 0.006 * sin(lx * 29.0 + latitude * 57.0 + kTwoPi * fract(t * 0.011));
        float y = latitude + wave * unrest * cos(latitude);
        y += 0.11 * hold * o.y * smoothstep(4.5, 0.4, within);

        // Jets: every band drifts at its own rate. Where two meet, both textures are blended, so
        // the shear never winds the clouds up however long it lasts.
        float row = y * 5.2 + 20.5;
        float lower = floor(row);
        float blend = smoothstep(0.30, 0.70, row - lower);
        float driftA =
            fract(t * 0.0042 * (hash(float2(lower, 3.0)) - 0.35) + hash(float2(lower, 5.0)));
        float driftB = fract(t * 0.0042 * (hash(float2(lower + 1.0, 3.0)) - 0.35) +
                             hash(float2(lower + 1.0, 5.0)));
        float2 swirl =
            float2(0.0, 0.55 * sin(lx * 5.0 + y * 30.0) + 0.35 * sin(lx * 11.0 - y * 47.0)) *
            unrest;
        float2 at = float2(longitude + spin, y * 3.2);
        float fine = 3.2 * edge * max(unrest, 1.0);
        float cloudA = streaks(at + float2(driftA, 0.0), swirl, fine);
        float cloudB = streaks(at + float2(driftB, 0.0), swirl, fine);
        float cloud = mix(cloudA, cloudB, blend);
        float2 curled = float2(at.x + 0.13, at.y * 1.5 + cloud * 0.45);
        float curl = streaks(curled, swirl * 1.2 + 1.3 * cloud, 2.0 * fine);

        float tone = bands(y + 0.060 * (cloud - 0.5) * unrest);
        tone += ((cloud - 0.5) * 1.15 + (curl - 0.5) * 0.75) * unrest;
        tone *= 1.0 - 0.55 * smoothstep(0.75, 1.25, abs(latitude));

        float3 belt = mix(float3(0.55, 0.30, 0.17), u.color1.rgb * 0.7, u.params.z);
        float3 zone = mix(float3(0.93, 0.86, 0.74), u.color2.rgb, u.params.z);
        float3 deep = mix(float3(0.34, 0.20, 0.14), u.color1.rgb * 0.4, u.params.z);
        float3 polar = mix(float3(0.48, 0.45, 0.44), u.color3.rgb * 0.6, u.params.z);
        float3 surface = mix(belt, zone, smoothstep(-0.75, 0.75, tone));
        surface = mix(surface, deep, smoothstep(-0.5, -1.25, tone));
        surface = mix(surface, float3(0.78, 0.60, 0.42),
                      0.35 * smoothstep(0.12, 0.0, abs(latitude - 0.03)));
        surface = mix(surface, polar, smoothstep(0.7, 1.2, abs(latitude)) * 0.8);

        // The oval itself: a pale collar, then rust wound into a spiral. Its clouds turn as one, with
        // a twist that is always the same, so they never wind up.
        if (within < 3.0) {
            float twist = 4.2 * sqrt(within) - kTwoPi * fract(t * 0.02);
            float2 wound = float2(cos(twist) * o.x + sin(twist) * o.y,
                                  cos(twist) * o.y - sin(twist) * o.x);
            float grain = 0.62 * noise(wound * 2.3 + 32.0, 64.0) +
                          0.38 * noise(wound * float2(5.3, 4.1) + 32.0, 64.0);
            float3 rust = mix(float3(0.76, 0.36, 0.21), u.color1.rgb, u.params.z);
            rust *= 0.77 + 0.44 * grain;
            rust = mix(rust, deep * 1.5, 0.45 * smoothstep(0.30, 0.0, within));
            within *= 1.0 + 0.14 * (curl - 0.5) + 0.26 * (cloud - 0.5) + 0.30 * (grain - 0.5);
            surface = mix(surface, zone * (0.90 + 0.24 * grain),
                          0.75 * smoothstep(2.1, 1.35, within));
            surface = mix(surface, rust, smoothstep(1.22, 0.72, within));
        }
        // White ovals follow each other along one southern latitude.
        float place = fract(longitude + spin) * 9.0 + 0.2;
        float pearl = hash(float2(floor(place) - 9.0 * floor(place / 9.0), 7.0));
        float2 w = float2((fract(place) - 0.5) * kTwoPi / 9.0 * cos(latitude),
                          latitude + 0.60 + 0.04 * pearl) /
                   (float2(0.062, 0.044) * (0.45 + 0.65 * pearl));
        float pale = dot(w, w) * (1.0 + 0.9 * (cloud - 0.5));
        surface = mix(surface, deep, 0.30 * smoothstep(2.4, 1.2, pale));
        surface = mix(surface, zone * (1.06 - 0.10 * pale), 0.9 * smoothstep(1.35, 0.35, pale));

        float lambert = dot(n, toSun);
        float day = smoothstep(-0.06, 0.30, lambert) * pow(saturate(lambert), 0.65);
        float limb = pow(max(z, 0.0), 0.38);
        float3 lit = surface * surface * (0.0012 + 1.25 * day * (0.18 + 0.82 * limb));
        // The atmosphere scatters a thin line of light along the limb.
        float rimLight = pow(1.0 - z, 4.0);
        lit += u.color3.rgb * rimLight * (0.018 + 0.30 * day);
        lit = sqrt(max(lit, 0.0));
        colour = mix(lit, colour, smoothstep(1.0 - edge, 1.0 + edge, r));
    }
    colour += u.color3.rgb * 0.10 * exp(-max(r - 1.0, 0.0) * 26.0) * step(1.0, r) *
              saturate(0.45 + dot(d, toSun.xy));

    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
