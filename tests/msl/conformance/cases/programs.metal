//! case CascadedShadows
struct CascadeData { float4x4 lightViewProjection[3]; float splits[4]; float bias; };
struct VSOut { float4 position [[position]]; float3 world; float3 normal; float viewZ; };
constexpr sampler shadowSampler(coord::normalized, filter::linear, mip_filter::none, address::clamp_to_edge, compare_func::less);
constant constexpr float2 kPoisson[] = {{-0.94, -0.39}, {0.94, -0.76}, {-0.09, 0.29}, {0.34, -0.92}};
constant uint kTaps = sizeof(kPoisson) / sizeof(kPoisson[0]);
static float sampleCascade(depth2d_array<float, access::sample> map, constant CascadeData& data, float3 world, uint cascade) {
    float4 clip = data.lightViewProjection[cascade] * float4(world, 1.0f);
    float3 ndc = clip.xyz / clip.w;
    float2 uv = ndc.xy * float2(0.5f, -0.5f) + 0.5f;
    float sum = 0;
    float2 texel = 1.0f / float2(map.get_width(), map.get_height());
#pragma unroll
    for (uint i = 0; i < kTaps; ++i)
        sum += map.sample_compare(shadowSampler, uv + kPoisson[i] * texel * 1.5f, cascade, ndc.z - data.bias);
    return sum / kTaps;
}
float gather_shadow(depth2d<float> map, float3 p) {
    constexpr sampler s(filter::linear, compare_func::less_equal);
    float4 v = map.gather_compare(s, p.xy, p.z);
    return dot(v, 0.25f);
}
fragment float4 shadow_fragment(VSOut in [[stage_in]], constant CascadeData& data [[buffer(0)]], depth2d_array<float> shadows [[texture(0)]], depth2d<float> single [[texture(1)]], depthcube<float> cube [[texture(2)]]) {
    uint cascade = 0;
    for (uint i = 0; i < 3; i++) { if (in.viewZ > data.splits[i]) cascade = i; else break; }
    float lit = sampleCascade(shadows, data, in.world, min(cascade, 2u));
    lit *= gather_shadow(single, in.world);
    lit *= cube.sample_compare(shadowSampler, in.normal, length(in.world), level(0));
    const float4 tints[3] = { float4(1, 0, 0, 1), float4(0, 1, 0, 1), {0, 0, 1, 1} };
    return tints[cascade] * lit;
}
struct ShadowVertex { packed_float3 position; packed_half4 color; uchar4 bones; };
vertex float4 shadow_vertex(const device ShadowVertex *v [[buffer(0)]], constant float4x4 &mvp [[buffer(1)]], const device float4x4 *bones [[buffer(2)]], unsigned int vid [[vertex_id]], uint iid [[instance_id]]) {
    float4 p = float4(v[vid].position, 1);
    float4 sk = 0;
    for (ushort i = 0; i < 4; i++) sk += bones[v[vid].bones[i] + iid * 4] * p * float(v[vid].color[i]);
    return mvp * sk;
}
//! compiles
//! case EngineStyleTemplates
#include <metal_type_traits>
namespace engine {
namespace math {
template <typename T, typename = metal::enable_if_t<metal::is_floating_point<T>::value>>
constexpr T lerp(T a, T b, T t) { return a + (b - a) * t; }
template <typename T> METAL_FUNC typename metal::enable_if<metal::is_same<T, float>::value, T>::type only_float(T x) { return x * 2; }
template <typename T, int N> METAL_FUNC metal::vec<T, N> square(metal::vec<T, N> v) { return v * v; }
template <typename T, int N> METAL_FUNC T sum(metal::vec<T, N> v) { T s = T(0); for (int i = 0; i < N; ++i) s += v[i]; return s; }
template <int N> struct Factorial { static constexpr constant int value = N * Factorial<N - 1>::value; };
template <> struct Factorial<0> { static constexpr constant int value = 1; };
constexpr int ipow(int b, int e) { return e == 0 ? 1 : b * ipow(b, e - 1); }
constexpr float deg2rad(float d) { return d * 0.017453292f; }
template <typename T> struct Range { T lo, hi; constexpr bool contains(T x) const { return x >= lo && x <= hi; } constexpr T size() const { return hi - lo; } };
}
template <typename Derived> struct Crtp { float eval(float x) const thread { return static_cast<const thread Derived*>(this)->f(x); } };
struct Base { float a; float twice() const { return a * 2; } void scale(float s) { a *= s; } };
struct Derived : Base { float b; float total() const { return twice() + b; } };
struct More : public Derived { float c = 3; };
enum class Blend : uint8_t { Normal, Multiply, Screen, Overlay };
template <Blend B> struct BlendOp;
template <> struct BlendOp<Blend::Normal> { static half3 apply(half3 a, half3 b) { return b; } };
template <> struct BlendOp<Blend::Multiply> { static half3 apply(half3 a, half3 b) { return a * b; } };
template <> struct BlendOp<Blend::Screen> { static half3 apply(half3 a, half3 b) { return 1.0h - (1.0h - a) * (1.0h - b); } };
}
using namespace engine;
constant constexpr int kTable[engine::math::ipow(2, 3)] = {1, 2, 3, 4, 5, 6, 7, 8};
static_assert(engine::math::Factorial<5>::value == 120, "factorial");
static_assert(engine::math::ipow(3, 4) == 81, "ipow");
fragment metal::half4 frag(metal::float4 pos [[position]], constant metal::float4 &k [[buffer(0)]]) {
    using namespace metal;
    Derived d;
    d.a = k.x; d.b = k.y;
    d.scale(2);
    More m; m.a = 1; m.b = 2;
    math::Range<float> r{0, 10};
    float x = math::lerp(k.x, k.y, k.z) + math::only_float(k.w) + math::sum(math::square(k)) + d.total() + m.total() + m.c;
    x += kTable[int(k.x) & 7] + (r.contains(x) ? r.size() : 0) + math::deg2rad(90.f);
    Base &base = d; 
    x += base.twice();
    half3 c = BlendOp<Blend::Screen>::apply(half3(0.5), half3(x));
    return half4(c, 1);
}
//! compiles
//! case PackedInstances
union FloatBits { float f; uint u; };
union Color32 { uint packed; uchar4 channels; };
struct Instance { packed_float3 position; uint color; half4 params; ushort2 tile; short flags; bool visible; char pad[3]; };
struct Out { float4 position [[position]]; float4 color; float2 uv; };
static float fastInvSqrt(float x) { FloatBits b; b.f = x; b.u = 0x5f3759df - (b.u >> 1); return b.f * (1.5f - 0.5f * x * b.f * b.f); }
float rand(thread uint& state) { state ^= state << 13; state ^= state >> 17; state ^= state << 5; return as_type<float>((state >> 9) | 0x3f800000u) - 1.0f; }
uint pcg(uint v) { uint state = v * 747796405u + 2891336453u; uint word = ((state >> ((state >> 28u) + 4u)) ^ state) * 277803737u; return (word >> 22u) ^ word; }
uint3 pcg3d(uint3 v) { v = v * 1664525u + 1013904223u; v.x += v.y * v.z; v.y += v.z * v.x; v.z += v.x * v.y; v ^= v >> 16u; v.x += v.y * v.z; return v; }
vertex Out blob_vertex(uint vid [[vertex_id]], uint iid [[instance_id]], device const Instance* instances [[buffer(0)]], constant float4x4& vp [[buffer(1)]]) {
    const float2 corners[] = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
    device const Instance& inst = instances[iid];
    Out o;
    float2 c = corners[vid & 3];
    o.uv = c;
    o.position = inst.visible ? vp * float4(float3(inst.position) + float3(c, 0) * float(inst.params.x), 1) : float4(0);
    o.color = unpack_unorm4x8_to_float(inst.color);
    if (inst.flags & (1 << 3)) o.color.rgb = pow(o.color.rgb, 2.2);
    return o;
}
fragment float4 blob_fragment(Out in [[stage_in]], constant uint& seed [[buffer(0)]], uint sample [[sample_id]]) {
    uint state = pcg(seed ^ as_type<uint>(in.position.x)) + sample;
    uint3 h = pcg3d(uint3(in.position.xyz));
    float jitter = rand(state) * 0.01 + float(h.x & 0xffu) / 255.0;
    float d = length(in.uv) + jitter;
    if (d > 1.0) discard_fragment();
    Color32 c; c.packed = pack_float_to_unorm4x8(in.color);
    float inv = fastInvSqrt(dot(in.uv, in.uv) + 1.0);
    return float4(c.channels) / 255.0 * inv;
}
//! compiles
//! case FractalsOfStructs
struct Complex {
    float re, im;
    Complex() = default;
    constexpr Complex(float r, float i = 0) : re(r), im(i) {}
    Complex operator+(Complex o) const { return {re + o.re, im + o.im}; }
    Complex operator*(const thread Complex& o) const { return Complex(re * o.re - im * o.im, re * o.im + im * o.re); }
    thread Complex& operator+=(Complex o) { re += o.re; im += o.im; return *this; }
    Complex operator-() const { return Complex{-re, -im}; }
    bool operator==(Complex o) const { return re == o.re && im == o.im; }
    float norm() const { return re * re + im * im; }
    explicit operator float2() const { return float2(re, im); }
};
inline Complex operator*(float s, Complex c) { return Complex(s * c.re, s * c.im); }
inline Complex operator-(Complex a, Complex b) { return a + -b; }
template <typename T, uint N> struct Stack {
    T data[N]; uint top = 0;
    void push(T v) { if (top < N) data[top++] = v; }
    T pop() { return data[--top]; }
    bool empty() const { return top == 0; }
    static constexpr uint capacity() { return N; }
};
struct Palette { half3 a, b, c, d; half3 operator()(half t) const constant { return a + b * cos(6.28318h * (c * t + d)); } };
constant Palette kPal = { half3(0.5h), half3(0.5h), half3(1.0h), half3(0.0h, 0.33h, 0.67h) };
static float mandel(float2 c, thread int& n) {
    Complex z(0, 0), k{c.x, c.y};
    n = 0;
    do { z = z * z + k; z += 0.0f * z; } while (z.norm() < 16.0 && ++n < 128);
    return n - log2(log2(z.norm())) + 4.0;
}
fragment half4 fractal(float4 p [[position]], constant float4& view [[buffer(0)]]) {
    int n;
    float t = mandel((p.xy - view.xy) * view.z, n);
    Stack<int, 8> s;
    for (int i = n; i > 0 && !s.empty() == false; i >>= 1) s.push(i & 1);
    int bits = 0;
    while (!s.empty()) bits += s.pop();
    Complex a = Complex(1) - Complex(0, 1);
    float2 v = float2(a);
    half3 col = n == 128 ? half3(0) : kPal(half(t) / 32.0h);
    return half4(col + half(bits) * half(v.x), Stack<int, 8>::capacity());
}
//! compiles
//! case VariadicHelpers
template <typename T> T total(T x) { return x; }
template <typename T, typename... Rest> T total(T x, Rest... rest) { return x + total(rest...); }
template <typename... Ts> constexpr uint count(Ts...) { return sizeof...(Ts); }
template <typename T, T... Vs> struct List { static constexpr constant uint size = sizeof...(Vs); };
template <int... I> struct Seq {};
template <int N, int... I> struct MakeSeq : MakeSeq<N - 1, N - 1, I...> {};
template <int... I> struct MakeSeq<0, I...> { typedef Seq<I...> type; };
template <typename F, typename... Args> auto apply(F f, Args... args) -> decltype(f(args...)) { return f(args...); }
struct Mul { float operator()(float a, float b) const { return a * b; } };
template <typename T> T clamp01(T x);
template <typename T> T clamp01(T x) { return clamp(x, T(0), T(1)); }
template float clamp01<float>(float);
template half3 clamp01(half3 x);
template <typename T> struct Box { T v; T get() const { return v; } };
template struct Box<float4>;
auto trailing(float x) -> float2 { return float2(x, -x); }
template <typename T> auto twice(T x) { return x + x; }
fragment float4 f(float4 p [[position]], constant float4& k [[buffer(0)]]) {
    float s = total(k.x, k.y, k.z, 1.0f) + count(1, 2.0f, k) + List<int, 1, 2, 3>::size;
    float m = apply(Mul(), s, 2.0f);
    Box<float4> b{k};
    return b.get() * m + clamp01(m) + trailing(m).xyxy + twice(k);
}
//! compiles
//! case EveryTextureKind
struct In { float4 pos [[position]]; float2 uv; float3 dir; float layer [[flat]]; };
struct Out { half4 c0 [[color(0)]]; float4 c1 [[color(1)]]; uint c2 [[color(2)]]; float depth [[depth(less)]]; uint mask [[sample_mask]]; };
constexpr sampler linearRepeat(coord::normalized, address::repeat, filter::linear, mip_filter::linear, max_anisotropy(8), lod_clamp(0.0f, 8.0f));
constexpr sampler nearestClamp = sampler(coord::normalized, address::clamp_to_zero, filter::nearest);
template <typename Tex> float4 triplanar(Tex tex, sampler s, float3 p, float3 n) { float3 w = abs(n); w /= dot(w, 1.0); return tex.sample(s, p.yz) * w.x + tex.sample(s, p.zx) * w.y + tex.sample(s, p.xy) * w.z; }
float parallax(texture2d_array<float> t, float2 uv, uint layer, thread float2& moved) { float h = t.sample(linearRepeat, uv, layer, bias(-1.0)).a; moved = uv + h * 0.02; return h; }
fragment Out all(In in [[stage_in]], uint sid [[sample_id]], uint coverage [[sample_mask]],
    texture1d<float> ramp [[texture(0)]], texture2d<half> albedo [[texture(1)]], texture2d_array<float> arr [[texture(2)]], texture3d<float> vol [[texture(3)]],
    texturecube<float> env [[texture(4)]], texturecube_array<half> probes [[texture(5)]], depth2d<float> depth [[texture(6)]], texture2d_ms<float> ms [[texture(7)]],
    texture2d<uint> ids [[texture(8)]], texture2d<int, access::read> ints [[texture(9)]], texture2d<float, access::read_write> img [[texture(10)]], texture_buffer<float> tb [[texture(11)]], texture2d<float> arr2[2] [[texture(12)]]) {
    Out o;
    float2 moved;
    float h = parallax(arr, in.uv, uint(in.layer), moved);
    o.c0 = albedo.sample(linearRepeat, moved) * half4(ramp.sample(linearRepeat, h));
    o.c1 = vol.sample(linearRepeat, in.dir, level(2)) + env.sample(linearRepeat, in.dir, gradientcube(dfdx(in.dir), dfdy(in.dir)));
    o.c1 += float4(probes.sample(linearRepeat, in.dir, 1, bias(1))) + depth.sample(nearestClamp, in.uv) + ms.read(uint2(in.pos.xy), sid);
    o.c2 = ids.read(uint2(in.pos.xy)).r + uint(ints.read(ushort2(in.pos.xy)).x) + ids.sample(nearestClamp, in.uv).g;
    img.write(img.read(uint2(in.pos.xy)) + 1, uint2(in.pos.xy));
    o.c1 += tb.read(uint(in.pos.x)) + triplanar(arr2[1], linearRepeat, in.dir, in.dir) + arr2[0].sample(linearRepeat, in.uv, int2(1, -1));
    o.c1 += albedo.gather(linearRepeat, in.uv, int2(0), component::w).x;
    float4 cubeRead = env.read(uint2(1, 2), 3);
    float2 q = env.calculate_unclamped_lod(linearRepeat, in.dir);
    o.c1 += cubeRead + q.x + env.get_width() + arr.get_array_size();
    o.depth = in.pos.z; o.mask = coverage & 0x5;
    return o;
}
//! compiles
//! case ClassesAndShapes
class Noise {
public:
    Noise(uint seed) : seed_(seed) {}
    float next() { seed_ = seed_ * 1664525u + 1013904223u; return float(seed_ >> 8) * (1.0f / 16777216.0f); }
    float2 next2() { float a = next(); return float2(a, next()); }
    static float fade(float t) { return t * t * t * (t * (t * 6 - 15) + 10); }
private:
    uint seed_;
};
struct Shape { float3 center{0, 0, 0}; half4 color = half4(1); };
struct SphereShape : Shape { float r; float sdf(float3 p) const { return length(p - center) - r; } };
struct BoxShape : Shape { float3 half_size; float sdf(float3 p) const { float3 q = abs(p - center) - half_size; return length(max(q, 0.0f)) + min(max(q.x, max(q.y, q.z)), 0.0f); } };
template <typename A, typename B> struct Union { A a; B b; float sdf(float3 p) const { return min(a.sdf(p), b.sdf(p)); } };
template <typename A, typename B> Union<A, B> make_union(A a, B b) { return {a, b}; }
struct Matrix2 { float m[2][2]; thread float& at(int i, int j) thread { return m[i][j]; } float at(int i, int j) const { return m[i][j]; } };
void transformAll(thread float (&arr)[4], float k) { for (thread float& x : arr) x *= k; }
float sum2(const thread float m[2][2]) { return m[0][0] + m[1][1]; }
float sumPtr(const thread float* p, size_t n) { float s = 0; for (size_t i = 0; i < n; ++i) s += p[i]; return s; }
fragment float4 frag(float4 pos [[position]], constant float3& c [[buffer(0)]]) {
    Noise rng(uint(pos.x) * 1973u + uint(pos.y) * 9277u);
    SphereShape s; s.r = 1; s.center = c;
    BoxShape b; b.half_size = float3(rng.next2(), 1);
    auto u = make_union(s, b);
    float d = u.sdf(float3(pos.xy * 0.01, 0));
    Matrix2 m = {{{1, 2}, {3, 4}}};
    m.at(0, 1) += d;
    float arr[4] = {1, 2, 3, d};
    transformAll(arr, 2.0f);
    float q = sum2(m.m) + sumPtr(arr, 4) + sumPtr(&arr[1], 2);
    return float4(Noise::fade(q), d, m.at(0, 1), float(s.color.x));
}
//! compiles
//! case TerrainPatches
struct TerrainParams { uint dimension_in_patches; float quadrant; float height_scale; float4x4 vp; };
struct Brush { float2 center; float size, hardness; };
struct Habitat { float4 color; half slope; ushort layer; };
enum class TerrainHabitatType : uint8_t { TerrainHabitatTypeSand, TerrainHabitatTypeGrass, TerrainHabitatTypeRock, TerrainHabitatTypeSnow, TerrainHabitatTypeCOUNT };
struct TerrainHabitat { struct ParticleProperties { float keyTimePoint; float3 scale; } particles[2]; float slopeStrength, slopeThreshold; };
struct VOut { float4 position [[position]]; float3 world [[user(world)]]; half3 n; float2 uv [[center_no_perspective]]; };
float sampleHeight(texture2d<float> heightMap, float2 uv) { constexpr sampler s(min_filter::linear, mag_filter::linear, address::clamp_to_edge); return heightMap.sample(s, uv, level(0)).r; }
template <int n> struct BSpline { static float4 weights(float t) { float4 r; const float it = 1 - t; r.x = it * it * it; r.y = 3 * t * t * t - 6 * t * t + 4; r.z = -3 * t * t * t + 3 * t * t + 3 * t + 1; r.w = t * t * t; return r * (1.f / n); } };
static constexpr constant uint kHabitats = (uint)TerrainHabitatType::TerrainHabitatTypeCOUNT;
vertex VOut terrain_vertex(uint vid [[vertex_id]], uint iid [[instance_id]], constant TerrainParams& p [[buffer(0)]], texture2d<float> heightMap [[texture(0)]], const device float2* grid [[buffer(1)]]) {
    VOut o;
    uint x = iid % p.dimension_in_patches, y = iid / p.dimension_in_patches;
    float2 uv = (float2(x, y) + grid[vid]) / p.dimension_in_patches;
    float h = sampleHeight(heightMap, uv) * p.height_scale;
    const float2 e = float2(1.0 / heightMap.get_width(), 1.0f / (float)heightMap.get_height());
    float3 dx = float3(2 * e.x, sampleHeight(heightMap, uv + float2(e.x, 0)) - sampleHeight(heightMap, uv - float2(e.x, 0)), 0);
    float3 dz = float3(0, sampleHeight(heightMap, uv + float2(0, e.y)) - sampleHeight(heightMap, uv - float2(0, e.y)), 2 * e.y);
    o.n = half3(normalize(cross(dz, dx)));
    o.world = float3(uv.x, h, uv.y);
    o.position = p.vp * float4(o.world, 1.0);
    o.uv = uv;
    return o;
}
fragment half4 terrain_fragment(VOut in [[stage_in]], constant TerrainHabitat* habitats [[buffer(1)]], texture2d_array<half> diffuse [[texture(1)]], constant Brush& brush [[buffer(2)]], sampler s [[sampler(0)]]) {
    half4 acc = 0.h; float total = 0;
    half w[kHabitats];
    for (uint i = 0; i < kHabitats; ++i) {
        w[i] = half(smoothstep(habitats[i].slopeThreshold, habitats[i].slopeThreshold + habitats[i].slopeStrength, float(in.n.y))) + 0.001h;
        total += w[i];
    }
#pragma unroll(4)
    for (uint i = 0; i < kHabitats; ++i) acc += diffuse.sample(s, in.uv * habitats[i].particles[1].scale.xy, i) * w[i] / half(total);
    float4 b = BSpline<6>::weights(fract(in.uv.x * 8));
    float ring = 1 - smoothstep(0., brush.size, distance(in.world.xz, brush.center)) * brush.hardness;
    acc.rgb = mix(acc.rgb, half3(1, 0.5, 0), half(ring) * half(dot(b, 0.25)));
    return acc;
}
//! compiles
//! case GlyphsFromDistanceFields
[[ stitchable ]] half4 ripple(float2 position, half4 color, float2 origin, float time) { float d = length(position - origin); return color * half(sin(d - time)); }
[[stitchable]] float2 wave(float2 position, float time, float speed) { return float2(position.x, position.y + sin(time * speed + position.x / 20) * 5); }
struct Glyph { packed_float4 rect; packed_half2 uv0, uv1; uchar4 color; uint16_t page; uint8_t flags; };
static_assert(sizeof(Glyph) == 32, "layout");
struct V { float4 p [[position]]; float2 uv; half4 c; uint page [[flat]]; uint outlined [[flat]]; };
vertex V glyph_vertex(ushort vid [[vertex_id]], ushort iid [[instance_id]], const device Glyph *g [[buffer(0)]], constant float2 &viewport [[buffer(1)]]) {
    const device Glyph &glyph = g[iid];
    const float2 c = float2(vid & 1, vid >> 1);
    V v;
    float4 r = glyph.rect;
    v.p = float4(mix(r.xy, r.zw, c) / viewport * float2(2, -2) + float2(-1, 1), 0, 1);
    v.uv = mix(float2(glyph.uv0), float2(glyph.uv1), c);
    v.c = half4(glyph.color) * (1.0h / 255.0h);
    v.page = glyph.page;
    v.outlined = glyph.flags & 0x1;
    return v;
}
inline half median(half3 v) { return max(min(v.r, v.g), min(max(v.r, v.g), v.b)); }
fragment half4 glyph_fragment(V in [[stage_in]], texture2d_array<half> atlas [[texture(0)]]) {
    constexpr sampler s(filter::linear, address::clamp_to_zero, coord::normalized);
    const half3 msd = atlas.sample(s, in.uv, in.page).rgb;
    const float2 unit = 4.0 / float2(atlas.get_width(), atlas.get_height());
    const float2 screen = 1.0 / fwidth(in.uv);
    const half range = half(max(0.5 * dot(unit, screen), 1.0));
    half d = range * (median(msd) - 0.5h);
    half a = saturate(d + 0.5h);
    if (in.outlined) { half o = saturate(d + 1.5h); return mix(half4(0, 0, 0, o), in.c, a); }
    if (a < 1.0h / 255.0h) discard_fragment();
    return in.c * a;
}
//! compiles
//! case VolumesOfLight
#include "simd/simd.h"
struct AABB { float3 lo, hi; };
struct Interval { float tmin, tmax; bool valid() const thread { return tmax > max(tmin, 0.f); } };
class Medium { public: constant float* table; uint count; texture3d<float> density; sampler smp; float sigma;
    float at(float3 p) const { return density.sample(smp, p, level(0)).r * sigma; }
    float lut(float x) const { uint i = min(uint(x * count), count - 1); return table[i]; } };
static Interval intersect(float3 o, float3 d, AABB b) { float3 inv = 1.0 / d, t0 = (b.lo - o) * inv, t1 = (b.hi - o) * inv; float3 a = min(t0, t1), c = max(t0, t1); return { max(max(a.x, a.y), a.z), min(min(c.x, c.y), c.z) }; }
static float hg(float mu, float g) { float gg = g * g; return (1 / (4 * M_PI_F)) * (1 - gg) / pow(1 + gg - 2 * g * mu, 1.5); }
struct Sample { float3 radiance = 0; float transmittance = 1; };
static void integrate(thread Sample& s, const thread Medium& m, float3 p, float step, float phase) {
    float sigma = m.at(p);
    if (sigma <= 0) return;
    float tr = exp(-sigma * step);
    s.radiance += s.transmittance * (1 - tr) * m.lut(saturate(p.y)) * phase;
    s.transmittance *= tr;
}
struct Frame { float4x4 inverseVP; packed_float3 eye; uint frame; AABB box; float3 light; float g; };
fragment float4 volumetric(float4 pos [[position]], constant Frame& f [[buffer(0)]], constant float* lut [[buffer(1)]], texture3d<float> density [[texture(0)]], texture2d<float> noise [[texture(1)]], depth2d<float> depth [[texture(2)]]) {
    constexpr sampler lin(filter::linear, address::clamp_to_edge);
    Medium m; m.table = lut; m.count = 64; m.density = density; m.smp = lin; m.sigma = 4;
    float4 clip = float4(pos.xy / float2(1920, 1080) * 2 - 1, 1, 1);
    float4 w = f.inverseVP * clip; w /= w.w;
    float3 eye = f.eye, dir = normalize(w.xyz - eye);
    Interval iv = intersect(eye, dir, f.box);
    if (!iv.valid()) return 0;
    float jitter = noise.read(uint2(pos.xy) & 63).x + f.frame * 0.618034;
    jitter -= floor(jitter);
    Sample s;
    const int N = 32; float dt = (iv.tmax - iv.tmin) / N;
    for (int i = 0; i < N; ++i) {
        float t = iv.tmin + dt * (i + jitter);
        integrate(s, m, (eye + dir * t - f.box.lo) / (f.box.hi - f.box.lo), dt, hg(dot(dir, f.light), f.g));
        if (s.transmittance < 0.01) { s.transmittance = 0; break; }
    }
    float z = depth.read(uint2(pos.xy));
    return float4(s.radiance, (1 - s.transmittance) * z);
}
//! compiles
//! case FluidDisplay
#define BINDING_COUNT 3
#define PER_CHANNEL(OP) OP(r) OP(g) OP(b)
#define GAMMA(ch) c.ch = pow(c.ch, 1.0 / 2.2);
#define DECLARE_LAYER(n) float4 layer##n(float2 uv, texture2d<float> t, sampler s) { return t.sample(s, uv * (n + 1)); }
DECLARE_LAYER(0)
DECLARE_LAYER(1)
DECLARE_LAYER(2)
#undef DECLARE_LAYER
struct Grid { int2 size; float2 texel; };
static float4 bilerp(texture2d<float, access::read> t, float2 uv, Grid g) {
    float2 st = uv * float2(g.size) - 0.5f; int2 i = int2(floor(st)); float2 f = st - float2(i);
    auto clampTo = clamp(i, int2(0), g.size - 1);
    uint2 a = uint2(clampTo), b = uint2(clamp(i + int2(1, 0), 0, g.size - 1)), c = uint2(clamp(i + int2(0, 1), int2(0), g.size - 1)), d = uint2(clamp(i + 1, int2(0), g.size - 1));
    return mix(mix(t.read(a), t.read(b), f.x), mix(t.read(c), t.read(d), f.x), f.y);
}
float curl(texture2d<float, access::read> vel, uint2 p) { uint w = vel.get_width() - 1, h = vel.get_height() - 1; float l = vel.read(uint2(max(p.x, 1u) - 1, p.y)).y, r = vel.read(uint2(min(p.x + 1, w), p.y)).y, b = vel.read(uint2(p.x, max(p.y, 1u) - 1)).x, t = vel.read(uint2(p.x, min(p.y + 1, h))).x; return r - l - t + b; }
fragment float4 display(float4 pos [[position]], texture2d<float, access::read> velocity [[texture(0)]], texture2d<float> dye [[texture(1)]], sampler s [[sampler(0)]], constant Grid& g [[buffer(0)]]) {
    float2 uv = pos.xy * g.texel;
    float4 v = bilerp(velocity, uv, g);
    float4 c = layer0(uv - v.xy * g.texel, dye, s) + layer1(uv, dye, s) * 0.5 + layer2(uv, dye, s) * .25;
    PER_CHANNEL(GAMMA)
    c.a = curl(velocity, uint2(pos.xy)) > 0 ? 1 : 0.5;
    return c;
}
//! compiles
//! case PackedVoxels
struct VoxelVertex { uint32_t packedA; uint32_t packedB; };
struct Bits { uint x, y, z, face, ao; };
constant float3 kNormals[6] = { {1,0,0}, {-1,0,0}, {0,1,0}, {0,-1,0}, {0,0,1}, {0,0,-1} };
constant uchar kFaceIndices[6][4] = { {0,1,2,3}, {4,5,6,7}, {0,1,4,5}, {2,3,6,7}, {0,2,4,6}, {1,3,5,7} };
struct O { float4 position [[position]]; float3 normal; half ao; uint material [[flat]]; };
vertex O voxel(const device VoxelVertex* v [[buffer(0)]], constant float4x4& mvp [[buffer(1)]], uint vid [[vertex_id]]) {
    const uint a = v[vid].packedA;
    Bits b; b.x = a & 63; b.y = a >> 6 & 63; b.z = a >> 12 & 63; b.face = a >> 18 & 7; b.ao = a >> 24 & 3;
    O o;
    float3 p = float3(b.x, b.y, b.z) + kFaceIndices[b.face % 6][vid & 3] * 0.125f;
    o.position = mvp * float4(p, 1);
    o.normal = kNormals[extract_bits(a, 18, 3) % 6];
    o.ao = half(b.ao) / 3.0h;
    o.material = v[vid].packedB & 0xFFu;
    return o;
}
fragment half4 voxelFrag(O in [[stage_in]], array<texture2d<half>, 4> atlas [[texture(0)]], sampler s [[sampler(0)]]) {
    half4 c = atlas[in.material & 3].sample(s, in.normal.xy);
    return c * in.ao;
}
//! compiles
//! case ArgumentBuffersOfMaterials
typedef enum ArgumentBufferID { ArgIDTexture, ArgIDSampler, ArgIDBuffer, ArgIDConstants } ArgumentBufferID;
struct FragmentShaderArguments {
    texture2d<half> exampleTexture [[ id(ArgIDTexture) ]];
    sampler exampleSampler [[ id(ArgIDSampler) ]];
    device float *exampleBuffer [[ id(ArgIDBuffer) ]];
    uint32_t exampleConstant [[ id(ArgIDConstants) ]];
};
struct Material { texture2d<float> albedo; texture2d<float> normal; constant float4* params; float roughness; };
struct Scene { Material materials[2]; sampler smp; array<texturecube<half>, 2> probes; };
struct RasterizerData { float4 position [[position]]; float2 texCoord; half4 color; };
fragment float4 fragmentShader(RasterizerData in [[ stage_in ]], device FragmentShaderArguments & args [[ buffer(0) ]], constant Scene& scene [[buffer(1)]]) {
    half4 color = args.exampleTexture.sample(args.exampleSampler, in.texCoord);
    uint index = uint(in.position.y) % args.exampleConstant;
    float c = args.exampleBuffer[index];
    float4 m = 0;
    for (int i = 0; i < 2; i++) m += scene.materials[i].albedo.sample(scene.smp, in.texCoord) * scene.materials[i].params[0] * scene.materials[i].roughness;
    half4 p = scene.probes[1].sample(scene.smp, float3(in.texCoord, 1));
    return float4(color * in.color) * c + m + float4(p);
}
//! compiles
//! case GroupsOfFragments
fragment float4 f(float4 p [[position]], constant float& k [[buffer(0)]], uint lane [[thread_index_in_simdgroup]], uint size [[threads_per_simdgroup]]) {
    float v = p.x * k;
    float s = simd_sum(v), m = simd_max(v), b = simd_broadcast_first(v);
    float q = quad_shuffle_xor(v, 1) + quad_broadcast(v, 0) + quad_sum(v);
    bool any = simd_any(v > 1.0), all = simd_all(v > 0);
    uint x = simd_prefix_exclusive_sum(1u);
    float sh = simd_shuffle_xor(v, 1) + simd_shuffle(v, ushort(2)) + simd_shuffle_down(v, 1);
    return float4(s + m, b + q, any + all, float(x) + sh + lane + size + simd_is_first());
}
//! compiles
