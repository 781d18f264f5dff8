#include <metal_stdlib>
using namespace metal;

struct Uniforms {
    float2 resolution;
    float  time;
    float  speed;
    float4 tint; // rgb used; a = unused
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

// An oscilloscope drawing a slowly drifting Lissajous figure.
//
// slot        what it does                                   useful range   default
// color1..3   not read: the colours are the phosphor's       -              -
// background  not read                                       -              -
// params.x..w not read: the figure is a fixed one            -              -

constant float kTwoPi = 6.2831853;
constant int kGroups = 30;    // 30 groups of 6 make the 180 segments of the trace
constant float kReach = 0.16; // past this the glow is below half a step of an 8-bit display

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

// An angle, rate in radians a second. The seconds are taken in two parts, each small enough for its
// product to keep its fraction: after a day the beam still runs evenly.
float angle(float t, float rate) {
    float each = rate / kTwoPi;
    float whole = floor(t / 256.0);
    return kTwoPi * fract(fract(256.0 * each) * whole + each * (t - 256.0 * whole));
}

// Brightness of a line of about one pixel at distance d (height units).
float hairline(float d, float pixel) { return saturate(1.2 - abs(d) / pixel); }

float distanceToSegment(float2 p, float2 a, float2 b) {
    float2 ab = b - a;
    float2 ap = p - a;
    return length(ap - ab * saturate(dot(ap, ab) / dot(ab, ab)));
}

// (sin, cos) of both axes' angles, turned on by the angles whose sine and cosine are in step.
float4 turn(float4 sc, float4 by) {
    return float4(sc.x * by.y + sc.y * by.x, sc.y * by.y - sc.x * by.x, sc.z * by.w + sc.w * by.z,
                  sc.w * by.w - sc.z * by.z);
}

float2 trace(float4 sc) { return float2(0.62 * sc.x, 0.44 * sc.z); }

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float pixel = 1.0 / u.resolution.y;
    float2 p = (in.position.xy - 0.5 * u.resolution) * pixel;
    float t = u.time * u.speed;

    float3 colour = float3(0.015, 0.045, 0.035);
    float2 grid = abs(fract(p * 8.0 + 0.5) - 0.5) / 8.0;
    colour +=
        float3(0.08, 0.18, 0.14) * 0.5 * max(hairline(grid.x, pixel), hairline(grid.y, pixel));
    // The centre cross carries five ticks to the division.
    float2 tick = abs(fract(p * 40.0 + 0.5) - 0.5) / 40.0;
    float centre = max(hairline(p.x, pixel), hairline(p.y, pixel));
    centre = max(centre, hairline(tick.x, pixel) * step(abs(p.y), 0.008));
    centre = max(centre, hairline(tick.y, pixel) * step(abs(p.x), 0.008));
    colour += float3(0.10, 0.22, 0.16) * centre;

    float fx = 3.0 + 0.5 * sin(angle(t, 0.13));
    float phase = angle(t, 0.35);

    // The trace is walked by turning both angles by a fixed step: no sine inside the loop. A group
    // of segments lies within half its arc of its middle, so most groups are passed over whole.
    float stride = kTwoPi / 180.0;
    float4 by = float4(sin(fx * stride), cos(fx * stride), sin(2.0 * stride), cos(2.0 * stride));
    float4 by3 = turn(turn(by, by), by);
    float4 sc = float4(sin(phase), cos(phase), sin(1.1), cos(1.1));
    float arc = 3.0 * stride * length(float2(0.62 * fx, 0.88));
    float nearest = kReach;
    for (int group = 0; group < kGroups; ++group) {
        float4 middle = turn(sc, by3);
        if (length(p - trace(middle)) < arc + nearest) {
            float2 a = trace(sc);
            float4 walk = sc;
            for (int i = 0; i < 6; ++i) {
                walk = turn(walk, by);
                float2 b = trace(walk);
                nearest = min(nearest, distanceToSegment(p, a, b));
                a = b;
            }
        }
        sc = turn(middle, by3);
    }
    colour += float3(0.30, 1.0, 0.5) * exp(-nearest * 220.0);
    colour += float3(0.15, 0.7, 0.35) * 0.5 * exp(-nearest * 40.0);

    float s = angle(t, 0.15 * kTwoPi);
    float2 head = float2(0.62 * sin(fx * s + phase), 0.44 * sin(2.0 * s + 1.1));
    colour += float3(0.9, 1.0, 0.92) * exp(-length(p - head) * 160.0) * 0.9;
    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
