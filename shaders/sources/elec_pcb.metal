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

// A populated circuit board seen close up, with light running along its traces.
//
// slot        what it does                                   useful range   default
// color1..3   colours of the signals, one to a trace         any            violet, cyan, blue
// background  not read: the board covers the picture         -              -
// params.x    brightness of the signals                      0 .. 2         1
// params.y    magnification, as a power of two               -1 .. 1        0
// params.z    0 green solder mask, 1 tinted by color3        0 .. 1         0
// params.w    more traces carry signals (above 0) or fewer   -0.4 .. 0.6    0
//
// Lengths are in board units, one unit being the pitch of two parallel traces. The board is endless
// and cut into square tiles. Each tile has a frame of its own: a runs along its traces, b across.
// Nothing but a bus crosses the edge of a tile, and no bus leaves its band, so a pixel needs to
// know its own tile and, of the two that continue its band, only whether the bus goes on there.

constant float kTile = 28.0;
constant float kBand = 28.0 / 3.0;
constant float2 kCell = float2(4.0, 7.0 / 3.0); // of the grid that passives stand on
constant float kTan = 0.41421356; // tan 22.5 degrees: how far a 45 degree bend shifts per pitch
constant float kTrace = 0.22;     // half the width of a trace
constant float kPad = 0.41;       // radius of a via's ring
constant float kDrill = 0.19;     // radius of a via's hole
constant float kClear = 0.42;     // clearance that the pour keeps
constant float kMargin = 1.3;     // least from a tile's edge to the first via of a bus that ends
constant float kStagger = 1.3;    // between the two rows of a staggered row of vias
constant float kHalo = 2.1;       // how far a signal's light reaches
constant float kPin = 1.1;        // length of a chip's pin
constant float2 kReach = float2(0.42, 0.23); // of a passive's clearance over the edge of its cell
constant float2 kFanOut = float2(1.58, -0.55); // from a passive's middle to one of its vias

constant float3 kLaminate = float3(0.035, 0.165, 0.078);
constant float3 kCopper = float3(0.13, 0.45, 0.19);
constant float3 kGold = float3(0.92, 0.72, 0.36);
constant float3 kTin = float3(0.78, 0.79, 0.80);
constant float3 kSilk = float3(0.90, 0.92, 0.86);

// Digits 0 to 9, then C R U A K N; bit 3 * row + column is a dot.
constant int kGlyphs[16] = {31599, 29850, 29671, 31207, 18925, 31183, 31695, 9383,
                            31727, 31215, 25166, 23275, 31597, 23530, 23277, 24573};

// What a pixel of the board shows, gathered feature by feature. Distances are signed, negative
// inside.
struct Layers {
    float copper; // to the nearest copper that the pour must clear
    float masked; // to the nearest trace, under the solder mask
    float2 aside; // which way is out of that trace
    float pour;   // to the pour's outline, its clearances cut out
    float gold;   // to the nearest exposed pad or ring
    float hole;   // to the nearest drill
    float silk;   // coverage of silkscreen
    float shade;  // light left by the shadows of parts
    float3 light; // signals' light
    float3 part;  // colour of the part on top
    float cover;  // its coverage
};

float hash(float2 p) { return fract(sin(dot(p, float2(41.13, 289.7))) * 43758.5453); }

float box(float2 p, float2 size) {
    float2 d = abs(p) - size;
    return length(max(d, 0.0)) + min(max(d.x, d.y), 0.0);
}

// From the nearest point of a line to p.
float2 offLine(float2 p, float2 from, float2 to) {
    float2 along = to - from;
    float2 q = p - from;
    return q - along * saturate(dot(q, along) / dot(along, along));
}

// A phase in turns. The seconds are taken in two parts, each small enough for its product to keep
// its fraction: after a day the lights still run evenly.
float turns(float t, float rate) {
    float whole = floor(t / 256.0);
    return fract(fract(256.0 * rate) * whole + rate * (t - 256.0 * whole));
}

// Smooth noise, 0 to 1; the lattice wraps every 128 cells.
float noise(float2 p) {
    float2 i = floor(p);
    float2 f = p - i;
    f = f * f * (3.0 - 2.0 * f);
    float2 a = i - 128.0 * floor(i / 128.0);
    float2 b = i + 1.0 - 128.0 * floor((i + 1.0) / 128.0);
    return mix(mix(hash(a), hash(float2(b.x, a.y)), f.x), mix(hash(float2(a.x, b.y)), hash(b), f.x),
               f.y);
}

float coverage(float d, float pixel) { return saturate(0.5 - d / pixel); }

void addVia(float2 p, float2 at, thread Layers& l) {
    float d = length(p - at);
    l.copper = min(l.copper, d - kPad);
    l.gold = min(l.gold, d - kPad);
    l.hole = min(l.hole, d - kDrill);
}

// A trace whose middle is `off` away.
void addTrace(float2 off, float radius, thread Layers& l) {
    float r = length(off);
    float d = r - radius;
    l.copper = min(l.copper, d);
    if (d < l.masked) {
        l.masked = d;
        l.aside = off / max(r, 0.001);
    }
}

void addPad(float d, thread Layers& l) {
    l.copper = min(l.copper, d);
    l.gold = min(l.gold, d);
}

void addPart(float3 colour, float cover, thread Layers& l) {
    l.part = mix(l.part, colour, cover);
    l.cover = max(l.cover, cover);
}

// A soft shadow of something whose outline is at distance d from the pixel moved against the light.
void addShadow(float d, float height, thread Layers& l) {
    l.shade *= 1.0 - 0.60 * saturate(0.5 - d / height);
}

// Coverage of a line of `count` glyphs. p is in dots from the upper left corner of the line;
// `first` is the first glyph, or -1 for a digit like the others.
float lettering(float2 p, float count, int first, float seed, float dots) {
    float place = floor(p.x / 4.0);
    float2 dotAt = floor(float2(p.x - 4.0 * place, p.y));
    if (p.x < 0.0 || p.y < 0.0 || p.y >= 5.0 || place >= count || dotAt.x > 2.5) {
        return 0.0;
    }
    int glyph = int(10.0 * hash(float2(place + 1.0, seed)));
    if (place < 0.5 && first >= 0) {
        glyph = first;
    }
    int bit = (kGlyphs[glyph] >> (3 * int(dotAt.y) + int(dotAt.x))) & 1;
    float2 local = fract(p) - 0.5;
    return float(bit) * coverage(box(local, float2(0.40)) - 0.08, dots);
}

// ---- what stands where ----

bool isHorizontal(float2 tile) { return hash(tile + float2(4.0, 55.0)) < 0.5; }

bool hasChip(float2 tile) { return hash(tile + float2(8.0, 18.0)) < 0.6; }

// Half the length of a tile's chip.
float chipLength(float2 tile) { return 4.0 + floor(hash(tile + float2(7.0, 31.0)) * 5.0); }

// Where the middle of a tile's chip stands along the tile. Short chips have room to stand aside.
float chipAt(float2 tile) {
    float room = 0.5 * (8.0 - chipLength(tile));
    return 14.0 + floor((hash(tile + float2(5.0, 83.0)) * 2.0 - 1.0) * (room + 0.5) + 0.5);
}

bool hasPour(float2 tile) { return hash(tile + float2(1.0, 11.0)) < 0.5; }

// Whether band (0 to 2) of a tile that runs the given way carries a bus.
bool isLive(float2 tile, float band, bool horizontal) {
    if (isHorizontal(tile) != horizontal) {
        return false;
    }
    if (hasChip(tile)) {
        return band == 1.0;
    }
    return hash(tile + float2(13.0 + band, 41.0)) < 0.70;
}

// Traces of the bus in one row of bands, 4 to 9. Constant along the row, so that tiles agree.
float busSize(float row) { return 4.0 + floor(hash(float2(row, 17.0)) * 6.0); }

// How far the bus may step aside and still keep to its band.
float busRoom(float size) { return max(0.0, floor(4.17 - 0.5 * (size - 1.0))); }

// Sideways step of a bus at a station (two to a tile), in whole pitches: a slow random walk, since
// neighbouring stations share one of their two numbers.
float jogAt(float row, float station, float room) {
    float sum = hash(float2(row, station + 0.5)) + hash(float2(row, station + 1.5));
    return floor(sum * (room + 0.5)) - room;
}

// From the edge of a tile, before it or after it, to the first via of a bus that ends there.
float marginOf(float2 tile, float row, float side) {
    float room = hasChip(tile) ? 0.5 * (8.0 - chipLength(tile)) : 3.5;
    return kMargin + room * hash(float2(row + 0.5 * side, dot(tile, float2(1.0, 3.0)) + 23.0));
}

// The number that decides what a cell of a free band's grid holds.
float cellChance(float2 cell, float2 tile) {
    float2 corner = tile - 4.0 * floor(tile / 4.0);
    return hash(cell + corner * float2(7.0, 12.0) + tile * 0.0625 + float2(0.5, 0.25));
}

// Whether a cell holds a passive. In a chip's tile only the first row clear of the fan-out does:
// the chip's decoupling capacitors. No part reaches over the edge of the tile.
bool holdsPassive(float2 cell, float2 tile, bool chip, float chipSize) {
    float chance = cellChance(cell, tile);
    if (cell.x < 0.0 || cell.x > 6.0) {
        return false;
    }
    if (!chip) {
        return chance < 0.42;
    }
    float2 home = abs((cell + 0.5) * kCell - float2(chipAt(tile), 14.0));
    float beyond = home.y - (0.5 * (chipSize - 1.0) + 1.2 + 2.25 + kStagger + kPad + 1.15);
    return beyond > 0.0 && beyond < kCell.y && home.x < chipLength(tile) + 1.0 && chance < 0.7;
}

// ---- a bus ----

// The light of a trace's signal at `along`: comets that run at a rate of their own.
float signalAt(float along, float row, float trace, float t, float share) {
    float id = trace + 16.0 * row;
    float chance = hash(float2(id, 71.0));
    if (chance > share) {
        return 0.0;
    }
    float spacing = 34.0 + 30.0 * hash(float2(id, 73.0));
    float rate = (5.0 + 6.0 * hash(float2(id, 79.0))) / spacing;
    float way = chance * 2.0 < share ? 1.0 : -1.0;
    float behind =
        fract(turns(t, rate) - way * along / spacing + hash(float2(id, 83.0))) * spacing;
    float ahead = spacing - behind;
    return exp(-behind * 0.34) + exp(-ahead * 2.6);
}

void addBus(float2 p, float2 tile, float row, float band, bool horizontal, float t,
            constant Uniforms& u, thread Layers& l) {
    float2 onward = horizontal ? float2(1.0, 0.0) : float2(0.0, 1.0);
    float here = horizontal ? tile.x : tile.y;
    bool fromBefore = isLive(tile - onward, band, horizontal);
    bool toAfter = isLive(tile + onward, band, horizontal);
    bool chip = hasChip(tile);
    float size = busSize(row);
    float room = busRoom(size);

    // Two stations meet at every half tile; between them the bus may step aside. Around chips and
    // next to its ends it keeps to the middle of the band.
    float joint = floor(p.x / 14.0 + 0.5);
    float station = 2.0 * here + joint;
    bool straightLeft;
    bool straightRight;
    if (joint < 0.5) {
        straightLeft = !fromBefore || hasChip(tile - onward);
        straightRight = !fromBefore || chip;
    } else if (joint < 1.5) {
        straightLeft = !fromBefore || chip;
        straightRight = !toAfter || chip;
    } else {
        straightLeft = !toAfter || chip;
        straightRight = !toAfter || hasChip(tile + onward);
    }
    float left = straightLeft ? 0.0 : jogAt(row, station - 1.0, room);
    float right = straightRight ? 0.0 : jogAt(row, station, room);

    // e is the distance from the middle of the bus, measured across the traces wherever they lead.
    // A jog is two bends of 45 degrees; the trace at e bends e * tan 22.5 degrees later (or
    // earlier), which is what keeps the pitch through the bends.
    float aside = right - left;
    float way = aside < 0.0 ? -1.0 : 1.0;
    float reach = 0.5 * abs(aside);
    float wander = joint == 1.0 ? 4.0 : 1.5;
    float middle = 14.0 * joint + (hash(float2(row, station + 0.25)) * 2.0 - 1.0) * wander;
    float a = p.x - middle;
    float e = p.y - left;
    float2 out = float2(0.0, 1.0);
    if (a + way * e * kTan > -reach) {
        e = p.y - right;
        if (a + way * e * kTan < reach) {
            e = (p.y - left - way * (a + reach)) * 0.70710678;
            out = float2(-way, 1.0) * 0.70710678;
        }
    }

    float chipMiddle = chipAt(tile);
    float chipEnd = chipLength(tile) + kPin;
    float margin = marginOf(tile, row, 0.0);
    float endMargin = marginOf(tile, row, 1.0);
    float first = floor(e + 0.5 * (size - 1.0));
    // No sliver of pour is left between the vias of a bus that ends.
    float2 rows = float2(0.5 * kStagger, 0.5 * (size - 1.0));
    if (!fromBefore) {
        l.copper = min(l.copper, box(p - float2(margin + rows.x, 0.0), rows));
    }
    if (!toAfter) {
        l.copper = min(l.copper, box(p - float2(kTile - endMargin - rows.x, 0.0), rows));
    }
    // A signal's halo fades before the edge of what this bus may light.
    float inside = 0.5 * kBand - abs(p.y);
    inside = fromBefore ? inside : min(inside, p.x);
    inside = toAfter ? inside : min(inside, kTile - p.x);
    float soften = saturate(1.4 * inside);
    for (int j = 0; j < 2; ++j) {
        float trace = clamp(first + float(j), 0.0, size - 1.0);
        float across = e - (trace - 0.5 * (size - 1.0));
        float back = fract(trace * 0.5) * 2.0 * kStagger;
        float from = fromBefore ? -2.0 : margin + back;
        float to = toAfter ? kTile + 2.0 : kTile - endMargin - back;
        if (chip) {
            if (p.x < chipMiddle) {
                to = chipMiddle - chipEnd + 0.3;
            } else {
                from = chipMiddle + chipEnd - 0.3;
            }
        }
        float beyond = p.x < from ? p.x - from : max(p.x - to, 0.0);
        addTrace(beyond * float2(1.0, 0.0) + across * out, kTrace, l);
        float d = length(float2(beyond, across)) - kTrace;
        if (!fromBefore && (p.x < chipMiddle || !chip)) {
            addVia(float2(p.x, across), float2(from, 0.0), l);
        }
        if (!toAfter && (p.x > chipMiddle || !chip)) {
            addVia(float2(p.x, across), float2(to, 0.0), l);
        }
        if (chip) {
            float2 toPin = float2(abs(p.x - chipMiddle) - chipEnd + 0.42, across);
            addPad(box(toPin, float2(0.55, 0.28)), l);
        }

        // Past this the halo is below half a step of an 8-bit display. Of two neighbours each lights
        // the space between them; past the outermost one the clamp gives the same trace twice,
        // which counts once.
        if (d > kHalo || (j > 0 && (first < 0.0 || first + 1.0 >= size))) {
            continue;
        }
        float glow = signalAt(here * kTile + p.x, row + (horizontal ? 0.0 : 500.0), trace, t,
                              0.72 + u.params.w);
        float pick = hash(float2(trace + 16.0 * row, 89.0));
        float3 hue = pick < 0.25 ? u.color1.rgb : (pick < 0.75 ? u.color2.rgb : u.color3.rgb);
        float core = exp(-max(d + 0.10, 0.0) * 16.0);
        float halo = exp(-max(d, 0.0) * 2.3) * soften;
        l.light += glow * (hue * (0.75 * core + 0.20 * halo) + float3(0.35) * glow * core);
    }
}

// ---- parts ----

// Distance to the copper of a passive, p from its middle: two pads, each fanned out to a via. The
// two ends are each other's image turned by half a turn.
float passiveCopper(float2 p) {
    float2 q = p.x < 0.0 ? -p : p;
    float d = length(offLine(q, float2(1.0, 0.0), kFanOut)) - 0.17;
    d = min(d, length(q - kFanOut) - kPad);
    return min(d, box(q - float2(0.96, 0.0), float2(0.34, 0.62)));
}

// A passive of the 0603 size and its fan-out, p from its middle.
void addPassive(float2 p, float seed, float2 toShadow, float pixel, thread Layers& l) {
    float2 q = p.x < 0.0 ? -p : p;
    float2 off = offLine(q, float2(1.0, 0.0), kFanOut);
    addTrace(p.x < 0.0 ? -off : off, 0.17, l);
    addVia(q, kFanOut, l);
    addPad(box(q - float2(0.96, 0.0), float2(0.34, 0.62)), l);

    bool resistor = hash(float2(seed, 97.0)) < 0.5;
    float2 size = float2(1.18, 0.55);
    addShadow(box(p - toShadow * 0.5, size), 0.45, l);
    float body = box(p, size - 0.06) - 0.06;
    float bulge = 1.0 - 0.35 * p.y * p.y / 0.3;
    float3 end = kTin * (0.80 + 0.28 * bulge - 0.25 * abs(p.y + 0.15));
    addPart(end, coverage(body, pixel), l);
    float middle = box(p, float2(0.76, 0.55));
    float3 colour = float3(0.70, 0.54, 0.36) * (0.70 + 0.38 * bulge);
    if (resistor) {
        float mark = lettering((p + float2(0.605, 0.275)) / 0.11, 3.0, -1, seed, pixel / 0.11);
        colour = mix(float3(0.055, 0.056, 0.062), float3(0.80), mark);
    }
    addPart(colour, coverage(middle, pixel), l);

    float name = lettering((p - float2(-0.66, -1.10)) / 0.085, 3.0, resistor ? 11 : 10, seed + 7.0,
                           pixel / 0.085);
    float line = coverage(box(p - float2(0.0, 0.80), float2(0.55, 0.04)), pixel);
    l.silk = max(l.silk, max(name, line));
}

// A chip with pins on four sides, p from its middle. Its ends take the bus one pin to a trace; its
// long sides fan out to two staggered rows of vias.
void addChip(float2 p, float2 tile, float size, float2 toShadow, float pixel, thread Layers& l) {
    float half1 = chipLength(tile);
    float half2 = 0.5 * (size - 1.0) + 1.2;
    float2 body = float2(half1, half2);
    float seed = dot(tile, float2(1.0, 37.0));

    float side = p.y < 0.0 ? 0.0 : 50.0;
    float y = abs(p.y) - half2;
    float lastPin = half1 - 1.0;
    float first = clamp(floor(p.x), -lastPin, lastPin);
    for (int j = 0; j < 2; ++j) {
        float pin = clamp(first + float(j), -lastPin, lastPin);
        float x = p.x - pin;
        addPad(box(float2(x, y - 0.68), float2(0.28, 0.55)), l);
        bool connected = hash(float2(pin + 20.0 + side, seed)) > 0.14;
        if (connected) {
            float far = 2.25 + kStagger * fract(0.5 * (pin + half1)) * 2.0;
            float2 off = offLine(float2(x, y), float2(0.0, 0.9), float2(0.0, far));
            addTrace(float2(off.x, p.y < 0.0 ? -off.y : off.y), 0.17, l);
            addVia(float2(x, y), float2(0.0, far), l);
        }
    }

    // Fiducials at two corners, the designator at a third.
    float2 f = p.x * p.y > 0.0 ? abs(p) : float2(100.0);
    float disc = length(f - body - float2(1.2, 1.9)) - 0.42;
    addPad(disc, l);
    l.copper = min(l.copper, disc - 0.30);
    float2 t = (p - float2(half1 + 0.35, -half2 - 2.2)) / 0.19;
    l.silk = max(l.silk, lettering(t, 3.0, 12, seed, pixel / 0.19));
    l.silk = max(l.silk, coverage(length(p - float2(-half1 - 0.95, half2 + 0.75)) - 0.22, pixel));
    // Brackets around the corners of the body.
    float2 bracket = abs(p) - body;
    float stroke = abs(max(bracket.x, bracket.y) - 0.34) - 0.05;
    l.silk = max(l.silk, coverage(max(stroke, -0.62 - min(bracket.x, bracket.y)), pixel));

    addShadow(box(p - toShadow, body), 0.9, l);

    // Pins: flat on the pad, bright where they bend up to the body.
    float2 end = float2(abs(p.x) - half1, abs(p.y) - half2);
    float nearest =
        clamp(floor(p.y + 0.5 * (size - 1.0) + 0.5), 0.0, size - 1.0) - 0.5 * (size - 1.0);
    float endPin = box(float2(end.x - 0.5 * kPin, p.y - nearest), float2(0.5 * kPin, 0.19));
    float sidePin =
        box(float2(p.x - clamp(floor(p.x + 0.5), -lastPin, lastPin), end.y - 0.5 * kPin),
            float2(0.19, 0.5 * kPin));
    float outward = endPin < sidePin ? end.x : end.y;
    float3 metal = kTin * (0.72 + 0.42 * exp(-30.0 * (outward - 0.40) * (outward - 0.40)) -
                           0.22 * step(0.55, outward));
    addPart(metal, coverage(min(endPin, sidePin), pixel), l);

    // The body: moulded, with a bevel that catches the light from the upper left.
    float d = box(p, body - 0.12) - 0.12;
    float2 n = p / body;
    float bevel = smoothstep(-0.34, -0.10, d);
    float facing = abs(end.x) < abs(end.y) ? sign(p.x) * toShadow.x : sign(p.y) * toShadow.y;
    float3 epoxy = float3(0.062, 0.064, 0.070) * (1.0 - 0.16 * (n.x + n.y));
    epoxy *= 1.0 - 1.1 * bevel * facing;
    epoxy += 0.05 * bevel * step(facing, 0.0);
    float dimple = length(p - float2(-half1 + 1.0, half2 - 1.0)) - 0.36;
    epoxy *= 1.0 - 0.45 * coverage(dimple, pixel);
    epoxy += 0.05 * coverage(abs(dimple) - 0.05, pixel);

    float letters = min(floor(half1 * 2.0 - 3.0), 9.0);
    float2 m = (p + float2(letters * 2.0 * 0.22, 1.05)) / 0.22;
    float mark =
        lettering(m, letters, 13 + int(3.0 * hash(float2(seed, 3.0))), seed + 3.0, pixel / 0.22);
    float2 m2 = (p + float2(letters * 2.0 * 0.22, -0.35)) / 0.16;
    mark = max(mark, lettering(m2, letters - 1.0, -1, seed + 5.0, pixel / 0.16));
    epoxy = mix(epoxy, float3(0.46, 0.47, 0.48), mark * 0.85);
    addPart(epoxy, coverage(d, pixel), l);
}

// The pour's outline alone: a chamfered polygon that keeps within its tile. p from the tile's
// corner.
float pourOutline(float2 p, float2 tile) {
    float2 size = float2(9.5 + 3.8 * hash(tile + float2(2.0, 61.0)),
                         9.5 + 3.8 * hash(tile + float2(9.0, 67.0)));
    float2 middle = (13.4 - size) * (float2(hash(tile + float2(6.0, 71.0)),
                                            hash(tile + float2(3.0, 79.0))) * 2.0 - 1.0);
    float chamfer = 2.0 + 4.0 * hash(tile + float2(4.0, 59.0));
    float2 q = abs(p - 14.0 - middle) - size;
    return max(max(q.x, q.y), (q.x + q.y + chamfer) * 0.70710678);
}

Layers bareLaminate() {
    Layers l;
    l.copper = 100.0;
    l.masked = 100.0;
    l.aside = float2(0.0);
    l.pour = 100.0;
    l.gold = 100.0;
    l.hole = 100.0;
    l.silk = 0.0;
    l.shade = 1.0;
    l.light = float3(0.0);
    l.part = float3(0.0);
    l.cover = 0.0;
    return l;
}

// What stands at a point of the board; `pixel` is a pixel's size in board units.
Layers survey(float2 board, float pixel, float t, constant Uniforms& u) {
    float2 tile = floor(board / kTile);
    float2 local = board - tile * kTile;
    bool horizontal = isHorizontal(tile);
    // A vertical tile is a horizontal one turned by a quarter, not mirrored: its lettering reads.
    float2 p = horizontal ? local : float2(local.y, kTile - local.x);
    float2 toShadow = horizontal ? float2(0.30, 0.42) : float2(0.42, -0.30);
    float band = clamp(floor(p.y / kBand), 0.0, 2.0);
    float row = 3.0 * (horizontal ? tile.y : tile.x) + band;
    bool chip = hasChip(tile);
    bool live = isLive(tile, band, horizontal);
    bool poured = hasPour(tile);

    Layers l = bareLaminate();
    float2 inBand = float2(p.x, p.y - (band + 0.5) * kBand);
    if (live) {
        addBus(inBand, tile, row, band, horizontal, t, u, l);
    }
    float keepOut = 100.0;
    float chipSize = busSize(3.0 * (horizontal ? tile.y : tile.x) + 1.0);
    if (chip) {
        float2 middle = p - float2(chipAt(tile), 14.0);
        addChip(middle, tile, chipSize, toShadow, pixel, l);
        float rows = 0.5 * (chipSize - 1.0) + 1.2 + 2.25 + kStagger;
        keepOut = box(middle, float2(chipLength(tile) + 0.4, rows));
    }

    // The free bands are laid out on a grid of 4 by 2.33.
    float2 cell = floor(p / kCell);
    float2 inCell = p - (cell + 0.5) * kCell;
    if (!live) {
        float chance = cellChance(cell, tile);
        if (holdsPassive(cell, tile, chip, chipSize)) {
            addPassive(inCell, floor(chance * 997.0), toShadow, pixel, l);
        } else if (poured && chance > 0.72) {
            // A stitching via ties the pour to the plane below; it stands in the copper.
            float2 at = (cell + 0.5) * kCell;
            bool clear = !chip || abs(at.y - 14.0) > 0.5 * (chipSize - 1.0) + 6.6 ||
                         abs(at.x - chipAt(tile)) > chipLength(tile) + 2.5;
            if (pourOutline(at, tile) < -0.9 && clear) {
                float d = length(inCell);
                l.gold = min(l.gold, d - kPad);
                l.hole = min(l.hole, d - kDrill);
            }
        }
    }
    if (poured) {
        // A passive's vias nearly fill its cell, so the pour must clear those of the next cells
        // too, and a wide bus nearly fills its band.
        float2 toward = float2(inCell.x < 0.0 ? -1.0 : 1.0, inCell.y < 0.0 ? -1.0 : 1.0);
        for (int j = 1; j < 4; ++j) {
            float2 next = cell + toward * float2(float(j & 1), float(j >> 1));
            float itsBand = floor(next.y * 0.25);
            bool near = ((j & 1) == 0 || abs(inCell.x) > 0.5 * kCell.x - kReach.x) &&
                        ((j & 2) == 0 || abs(inCell.y) > 0.5 * kCell.y - kReach.y);
            if (near && itsBand >= 0.0 && itsBand <= 2.0 && !isLive(tile, itsBand, horizontal) &&
                holdsPassive(next, tile, chip, chipSize)) {
                l.copper = min(l.copper, passiveCopper(p - (next + 0.5) * kCell));
            }
        }
        float side = inBand.y < 0.0 ? -1.0 : 1.0;
        if (abs(inBand.y) > 0.5 * kBand - kClear && abs(band + side - 1.0) < 1.5 &&
            isLive(tile, band + side, horizontal)) {
            Layers beside = bareLaminate();
            addBus(inBand - float2(0.0, side * kBand), tile, row + side, band + side, horizontal,
                   t, u, beside);
            l.copper = min(l.copper, beside.copper);
        }
        l.pour = max(max(pourOutline(p, tile), kClear - l.copper), -keepOut);
    }
    if (!horizontal) {
        l.aside = float2(-l.aside.y, l.aside.x);
    }
    return l;
}

fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {
    float2 screen = (in.position.xy - 0.5 * u.resolution) / u.resolution.y;
    float t = u.time * u.speed;

    // About 22 pixels to a unit, within bounds: a thumbnail still shows whole parts, and a very
    // large display does not dissolve into fine lines.
    float units = clamp(u.resolution.y / 22.0, 26.0, 100.0) * exp2(-u.params.y);
    float pixel = units / u.resolution.y;
    // Small pictures frame a chip with its bus leaving to the right.
    float2 origin = u.resolution.y < 600.0 ? float2(301.0, 92.0) : float2(301.0, 57.0);
    float2 board = origin + screen * units;
    Layers l = survey(board, pixel, t, u);

    // The laminate: a woven cloth of glass, each thread over one and under the next, below a mask
    // that was not poured quite evenly.
    float3 mask = mix(float3(1.0), u.color3.rgb * 1.6, u.params.z);
    float2 yarn = board * 5.2;
    float2 bundle = sin(yarn);
    float weave = abs(bundle.x * bundle.y > 0.0 ? bundle.x : bundle.y) - 0.64;
    float cloudy = noise(board * 0.11) + 0.5 * noise(board * 0.31 + 40.0) - 0.75;
    float3 colour = kLaminate * mask * (1.0 + 0.14 * weave * saturate(1.6 - 12.0 * pixel));

    // Copper below the mask. The mask runs over its edges and catches the light on one flank; it
    // lies thinner along the middle of a trace.
    float3 copper = kCopper * mask;
    colour = mix(colour, copper * 0.70, coverage(l.pour, pixel));
    float bead = max(0.09, 0.8 * pixel);
    float lip = exp(-l.pour * l.pour / (bead * bead));
    colour *= 1.0 + 0.16 * lip;
    float ridge = saturate(-l.masked / kTrace);
    colour = mix(colour, copper * (0.80 + 0.34 * ridge), coverage(l.masked, pixel));
    float flank = exp(-l.masked * l.masked / (bead * bead)) * saturate(2.0 - 12.0 * pixel);
    float facing = dot(l.aside, float2(-0.58, -0.81));
    colour *= 1.0 + flank * facing * 0.55;
    colour *= 1.0 + 0.26 * cloudy;
    // A window's soft reflection lies on the gloss and wanders with the day.
    float wander = 6.2831853 * turns(t, 0.004);
    float2 window = screen - float2(0.55 * cos(wander) - 0.25, 0.30 * sin(wander) - 0.22);
    float gloss = exp(-2.6 * dot(window, window)) * (1.0 + 0.9 * cloudy + 0.8 * flank * facing);
    colour += float3(0.030, 0.046, 0.042) * gloss;

    float ring = saturate(-l.gold / 0.4);
    colour = mix(colour, kGold * (0.88 + 0.22 * ring), coverage(l.gold, pixel));
    colour = mix(colour, float3(0.015, 0.02, 0.018), coverage(l.hole, pixel));
    colour = mix(colour, kSilk, l.silk * coverage(-l.gold, pixel));
    colour += l.light * u.params.x * coverage(l.hole * -1.0, pixel);
    colour *= l.shade;
    colour = mix(colour, l.part, l.cover);

    colour *= 1.08 - 0.30 * dot(screen, screen) - 0.10 * (screen.x + screen.y);
    colour += (hash(fmod(in.position.xy, 128.0) + 0.11) - 0.5) * (0.9 / 255.0);
    return float4(saturate(colour) * u.tint.rgb, 1.0);
}
