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

// The classic plasma: slow waves that interfere, coloured by a smooth cycle through the palette.
//
// slot        what it does                                   useful range   default
// color1..3   the three colours of the cycle                 any            violet, cyan, blue
// background  colour that the troughs sink towards           dark           near black
// params.x    size of the waves                              0.5 .. 3       1
// params.y    shift of the colour cycle, in turns            0 .. 1         0
// params.z    extra contrast                                 -0.5 .. 1      0
// params.w    warmth: turns the crests towards rose          -1 .. 1        0

constant float kTwoPi = 6.2831853;

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

// A wave's phase, wrapped so that a day of animation keeps its precision.
float turns(float t, float rate) { return kTwoPi * fract(t * rate); }

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 p = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    p *= 3.5 / max(u.params.x, 0.05);
    float t = u.time * u.speed;

    // The plane is bent before the waves cross it, so that no straight crest is left to see.
    float2 q = p;
    q.x += 0.55 * sin(q.y * 1.3 + turns(t, 0.031));
    q.y += 0.55 * sin(q.x * 1.1 - turns(t, 0.027));
    float2 centre = float2(1.1 * sin(turns(t, 0.017)), 0.8 * cos(turns(t, 0.023)));
    float v = sin(q.x * 1.9 + turns(t, 0.041));
    v += sin(dot(q, float2(1.1, 1.7)) - turns(t, 0.037));
    // The ring wave's middle is rounded off: a bare distance would show as the tip of a cone.
    float2 d = q - centre;
    v += sin(sqrt(dot(d, d) + 0.16) * 2.7 - turns(t, 0.053));
    v *= 1.0 / 3.0;

    float cycle = v * 0.85 + 0.12 * q.x + u.params.y;
    float3 weight = 0.5 + 0.5 * cos(kTwoPi * (cycle + float3(0.0, 0.3333, 0.6667)));
    weight *= weight;
    float3 colour = (u.color1.rgb * weight.x + u.color2.rgb * weight.y + u.color3.rgb * weight.z) /
                    (weight.x + weight.y + weight.z);
    // Pushing the mixture away from its own grey keeps it saturated between two palette colours.
    float grey = dot(colour, float3(0.2126, 0.7152, 0.0722));
    colour = max(mix(float3(grey), colour, 1.45), 0.0);

    float swell = 0.5 + 0.5 * sin(v * 3.1 + q.y * 0.9 + turns(t, 0.019));
    colour += float3(0.55, 0.05, 0.10) * (0.45 + u.params.w) * swell * weight.x;
    float depth = saturate(mix(0.5, swell, 0.85 + 0.6 * u.params.z));
    colour = mix(u.background.rgb, colour, 0.28 + 0.72 * depth);

    colour += (hash(fmod(in.position.xy, 128.0)) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
