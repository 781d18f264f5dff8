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

// The four corners of the lattice cell of p. The lattice wraps every 64 cells, which keeps the
// sine's argument small.
float4 corners(float2 i) {
    float2 lo = i - 64.0 * floor(i / 64.0);
    float2 hi = lo + 1.0;
    hi -= 64.0 * floor(hi / 64.0);
    return float4(hash(lo), hash(float2(hi.x, lo.y)), hash(float2(lo.x, hi.y)), hash(hi));
}

// Value noise with its gradient: (value, d/dx, d/dy).
float3 noise(float2 p) {
    float2 i = floor(p);
    float2 f = p - i;
    float2 w = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
    float2 dw = 30.0 * f * f * (f * (f - 2.0) + 1.0);
    float4 n = corners(i);
    float2 slope = float2(mix(n.y - n.x, n.w - n.z, w.y), mix(n.z - n.x, n.w - n.y, w.x));
    return float3(mix(mix(n.x, n.y, w.x), mix(n.z, n.w, w.x), w.y), dw * slope);
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

// A place in the plane after the air has carried it, with the derivatives of the place by the
// picture's x and y.
struct Carried {
    float2 at;
    float2 dx;
    float2 dy;
};

// Carries a place along the stream lines of a field of noise. The flow of a stream function neither
// thins nor crowds what it carries, so the smoke curls without being pinched. `field` shifts the
// field, `pitch` is its fineness and `reach` how far it carries.
Carried stir(Carried from, float2 field, float pitch, float reach) {
    float2 p = from.at * pitch + field;
    float2 slope = float2(0.0);
    float3 bend = float3(0.0); // second derivatives: xx, xy, yy
    float weight = 1.0;
    float2 turn = float2(1.0, 0.0);
    for (int i = 0; i < 2; ++i) {
        float2 q = float2(turn.x * p.x + turn.y * p.y, turn.x * p.y - turn.y * p.x);
        float2 cell = floor(q);
        float2 f = q - cell;
        float2 w = f * f * f * (f * (f * 6.0 - 15.0) + 10.0);
        float2 dw = 30.0 * f * f * (f * (f - 2.0) + 1.0);
        float2 ddw = 60.0 * f * (f * (2.0 * f - 3.0) + 1.0);
        float4 n = corners(cell);
        float2 along = float2(mix(n.y - n.x, n.w - n.z, w.y), mix(n.z - n.x, n.w - n.y, w.x));
        float twist = n.x - n.y - n.z + n.w;
        float2 g = dw * along;
        float3 h = float3(ddw.x * along.x, dw.x * dw.y * twist, ddw.y * along.y);
        float c = turn.x;
        float s = turn.y;
        slope += weight * float2(c * g.x - s * g.y, s * g.x + c * g.y);
        bend += weight * float3(c * c * h.x - 2.0 * c * s * h.y + s * s * h.z,
                                c * s * (h.x - h.z) + (c * c - s * s) * h.y,
                                s * s * h.x + 2.0 * c * s * h.y + c * c * h.z);
        turn = float2(1.43, 1.21);
        weight = 0.34;
    }
    Carried to;
    to.at = from.at + reach * float2(slope.y, -slope.x);
    float2 rowX = reach * pitch * bend.yz;
    float2 rowY = -reach * pitch * bend.xy;
    to.dx = from.dx + float2(dot(rowX, from.dx), dot(rowY, from.dx));
    to.dy = from.dy + float2(dot(rowX, from.dy), dot(rowY, from.dy));
    return to;
}

// A point that circles slowly about its start; motion that never runs away.
float2 orbit(float t, float rate, float start, float size) {
    float a = kTwoPi * (fract(t * rate) + start);
    return size * float2(cos(a), sin(a));
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 screen = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float t = u.time * u.speed;

    // The air travels on a circle so wide that it reads as a straight drift upwards, and stirs the
    // smoke three times, each time finer.
    Carried air;
    air.at = screen * (1.6 / max(u.params.x, 0.05)) + orbit(t, 0.0006, 0.0, 11.0);
    air.dx = float2(1.0, 0.0);
    air.dy = float2(0.0, 1.0);
    air = stir(air, orbit(t, 0.009, 0.1, 0.6), 0.75, 0.26);
    air = stir(air, 19.7 + orbit(t, 0.011, 0.6, 0.6), 1.7, 0.075);

    float3 key = mix(float3(0.95, 0.93, 0.98), u.color1.rgb, saturate(0.62 + 0.62 * u.params.z));
    float3 fill = mix(float3(0.80, 0.90, 1.00), u.color2.rgb, saturate(0.75 + 0.75 * u.params.z));
    float3 ambient = mix(float3(0.5), u.color3.rgb, saturate(0.60 + 0.6 * u.params.z)) * 0.10;
    float strength = 1.0 + u.params.w;
    // The lights stand near the edges of the picture, whatever its shape.
    float edge = 0.5 * u.resolution.x / u.resolution.y;
    float keyReach = exp(-1.15 * length(screen - float2(-0.62 * edge, -0.50)));
    float fillReach = exp(-1.5 * length(screen - float2(0.96 * edge, 0.30)));

    // From the nearest sheet to the furthest; the further, the softer, so one shows through the
    // other.
    float3 colour = float3(0.0);
    float through = 1.0;
    for (int i = 0; i < kSheets; ++i) {
        float n = float(i);
        float pitch = 1.0 + 0.16 * n;
        float2 q = pitch * air.at + float2(3.7, -5.9) * n;
        float3 v = billows(q, 5 - i / 2, 0.42);
        float2 slope = pitch * float2(dot(v.yz, air.dx), dot(v.yz, air.dy));
        slope /= 1.0 + 0.45 * length(slope);
        float body = v.x + 0.03 + 0.10 * screen.y + 0.5 * u.params.y;
        float wisp = smoothstep(-0.08, 0.34, body);
        float opacity = wisp * (0.06 + 0.62 * wisp);
        float lit = 0.46 - 0.75 * dot(slope, float2(-0.64, -0.77));
        float side = 0.36 - 0.75 * dot(slope, float2(0.98, 0.20));
        // Thick smoke shades itself, the more of it stands between it and the key light.
        float nearer = billows(q - pitch * (0.16 * air.dx + 0.19 * air.dy), 2, 0.42).x;
        float inside = exp(-1.3 * saturate(2.2 * (nearer + 0.10)));
        lit = smoothstep(0.0, 1.0, lit);
        side = smoothstep(0.05, 1.0, side);
        float3 light = key * lit * inside * (0.75 + 4.8 * keyReach) * strength +
                       fill * side * (1.0 - 0.4 * wisp) * (0.30 + 3.0 * fillReach) * strength;
        colour += through * opacity * (ambient + light * (1.0 - 0.18 * n));
        through *= 1.0 - opacity;
    }
    float3 behind = u.background.rgb * 0.8;
    behind += (key * 0.06 * keyReach * keyReach + fill * 0.03 * fillReach) * strength;
    colour += through * behind;
    colour = 1.0 - exp(-1.5 * colour);

    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
