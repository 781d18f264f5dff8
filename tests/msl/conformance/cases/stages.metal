//! case SampleIdAndMask
fragment float4 f_main(float4 p [[position]], uint id [[sample_id]], uint mask [[sample_mask]]) { return float4(id, mask, p.x, 0); }
//! gives 0 1 0.5 0
//! case SampleMaskIsWritten
struct Out { float4 color [[color(0)]]; uint mask [[sample_mask]]; };
fragment Out f_main(float4 p [[position]]) { Out o; o.color = float4(3); o.mask = p.x < 1 ? 1 : 0; return o; }
//! gives 3 3 3 3
//! case SampleMaskHidesTheFragment
struct Out { float4 color [[color(0)]]; uint mask [[sample_mask]]; };
fragment Out f_main(float4 p [[position]]) { return {float4(3), p.x < 1 ? 0u : 1u}; }
//! gives -7 -7 -7 -7
//! case FrontFacing
fragment float4 f_main(bool front [[front_facing]], float2 at [[point_coord]]) { return float4(front, !front, 0, 0); }
//! gives 0 1 0 0
//! case DepthIsWritten
struct Out { float4 color [[color(0)]]; float depth [[depth(less)]]; };
[[early_fragment_tests]] fragment float4 other() { return 0; }
fragment Out f_main(float4 p [[position]]) { Out o; o.color = p; o.depth = p.z * 0.5; return o; }
//! compiles
//! case SeveralColours
struct Out { float4 a [[color(0)]]; half4 b [[color(1)]]; uint2 c [[color(2)]]; };
fragment Out f_main() { return {float4(5), half4(1), uint2(3)}; }
//! gives 5 5 5 5
//! case DualSourceBlending
struct Out { float4 a [[color(0), index(0)]]; float4 b [[color(0), index(1)]]; };
fragment Out f_main() { return {float4(5), float4(1)}; }
//! compiles
//! case NarrowColours
fragment half2 f_main() { return half2(1.5, 2.5); }
//! compiles
//! case ClipDistanceHidesTheTriangle
struct Out { float4 position [[position]]; float clip [[clip_distance]]; };
vertex Out v_main(uint vid [[vertex_id]]) { Out o; o.position = float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); o.clip = -1; return o; }
fragment float4 f_main() { return float4(1); }
//! gives -7 -7 -7 -7
//! case ClipDistanceArrays
struct Out { float4 position [[position]]; float clip [[clip_distance]] [2]; float x; };
vertex Out v_main(uint vid [[vertex_id]]) { Out o; o.position = float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); o.clip[0] = 1; o.clip[1] = 2; o.x = 4; return o; }
struct In { float x; };
fragment float4 f_main(In in [[stage_in]]) { return float4(in.x); }
//! gives 4 4 4 4
//! case FlatAndOtherInterpolation
struct Out { float4 position [[position]]; float a [[flat]]; float b [[center_no_perspective]]; float c [[centroid_perspective]]; half2 d; uint e [[user(number)]]; short f [[flat]]; };
vertex Out v_main(uint vid [[vertex_id]]) { Out o; o.position = float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); o.a = vid; o.b = 3; o.c = 4; o.d = half2(5, 6); o.e = 7; o.f = -8; return o; }
fragment float4 f_main(Out in [[stage_in]]) { return float4(in.a, in.b + in.c, in.d.y, int(in.e) + in.f); }
//! gives 0 7 6 -1
//! case InterpolationAtSamples
struct Out { float4 position [[position]]; float a [[sample_perspective]]; float b [[sample_no_perspective]]; };
vertex Out v_main(uint vid [[vertex_id]]) { return {float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1), 2, 3}; }
fragment float4 f_main(Out in [[stage_in]]) { return float4(in.a, in.b, 0, 0); }
//! gives 2 3 0 0
//! case PointSizeAndLayers
struct Out { float4 position [[position]]; float size [[point_size]]; uint layer [[render_target_array_index]]; uint view [[viewport_array_index]]; };
vertex Out v_main(uint vid [[vertex_id]], uint i [[instance_id]], uint bv [[base_vertex]], uint bi [[base_instance]]) { Out o; o.position = float4(vid + bv); o.size = 3; o.layer = i + bi; o.view = 0; return o; }
fragment float4 f_main(uint layer [[render_target_array_index]], uint view [[viewport_array_index]], uint prim [[primitive_id]]) { return float4(layer, view, prim, 0); }
//! compiles
//! case VertexAttributes
struct In { float3 position [[attribute(0)]]; half4 color [[attribute(1)]]; uchar4 weights [[attribute(2)]]; int2 cell [[attribute(3)]]; packed_float2 uv [[attribute(4)]]; };
struct Out { float4 position [[position]]; half4 color; };
vertex Out v_main(In in [[stage_in]], constant float4x4& m [[buffer(0)]]) { Out o; o.position = m * float4(in.position, 1); o.color = in.color * half(in.weights.x) + half(in.uv.y); return o; }
fragment half4 f_main(Out in [[stage_in]]) { return in.color; }
//! compiles
//! case AttributeSpellings
[[vertex]] float4 v_main(uint vid [[vertex_id]]) { return float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1); }
[[fragment]] float4 f_main(float4 p [[position]]) { return float4(p.xy, 7, 8); }
//! gives 0.5 0.5 7 8
//! case AttributesBeforeTheType
fragment float4 f_main([[position]] float4 p) { return p; }
//! gives 0.5 0.5 0 1
//! case EnumsNumberTheBuffers
enum Index { first = 0, floats = 1, last = floats + 2 };
enum class Scoped : int { halves = 3 };
#define SLOT floats
fragment float4 f_main(constant float* a [[buffer(SLOT)]], constant half* h [[buffer(last)]]) { return float4(a[5], h[3], 0, 0); }
//! gives 5 1.5 0 0
//! case ConstantsNumberTheBuffers
constant constexpr int kSlot = 1;
fragment float4 f_main(constant float* a [[buffer(kSlot)]]) { return float4(a[9]); }
//! gives 9 9 9 9
//! case EntryPointsInNamespaces
namespace looks { fragment float4 f_main(float4 p [[position]]) { return float4(2); } }
//! gives 2 2 2 2
//! case EntryPointsCallHelpersAndShareThem
static float4 shade(float2 p) { return float4(p, 1, 2); }
fragment float4 f_main(float4 p [[position]]) { return shade(p.xy); }
fragment float4 f_other(float4 p [[position]]) { return shade(p.yx); }
//! gives 0.5 0.5 1 2
//! case KernelsAreSkipped
kernel void k_main(device float* x [[buffer(0)]], uint i [[thread_position_in_grid]]) { x[i] = 1; }
fragment float4 f_main() { return float4(4); }
//! gives 4 4 4 4
//! case OnlyKernels
kernel void k_main(device float* x [[buffer(0)]], uint i [[thread_position_in_grid]]) { x[i] = 1; }
#define v_main
//! refused the source has only kernels
//! case ColoursAreNotRead
fragment float4 f_main(float4 old [[color(0)]]) { return old; }
//! refused reading the framebuffer through '[[color(n)]]' is not supported
//! case BuffersAreTakenOnce
fragment float4 f_main(constant float& a [[buffer(1)]], constant float& b [[buffer(1)]]) { return a + b; }
//! refused the buffer index 1 is taken already
//! case BufferNumbersEnd
fragment float4 f_main(constant float& a [[buffer(31)]]) { return a; }
//! refused the buffer index 31 is beyond the last, 30
//! case FreeIndicesFollow
fragment float4 f_main(constant float* b [[buffer(0)]], constant float* a) { return float4(a[3], b[1], 0, 0); }
//! compiles
//! case ParametersNeedTheirAttribute
fragment float4 f_main(float x) { return x; }
//! refused this parameter of an entry point has no attribute
//! case ArgumentBuffers
struct Args { texture2d<float> t [[id(0)]]; sampler s [[id(1)]]; constant float* data [[id(2)]]; float scale [[id(3)]]; };
fragment float4 f_main(constant Args& args [[buffer(0)]]) { return args.t.sample(args.s, float2(0.375)) + float4(0, 0, args.data[7], args.data[2]); }
//! gives 1 1 12 3
//! case ArgumentBufferWithPlainMembers
struct Args { texture2d<float> t; float4 color; constant float4& extra; array<texture2d<float>, 2> more; half h; };
float4 go(constant Args& a) { return a.t.read(uint2(1)) + a.more[1].read(uint2(1)) + a.extra + a.color; }
fragment float4 f_main(constant Args& args [[buffer(1)]]) { return go(args) + float4(args.h); }
//! gives 6 8 18 12
//! case ArgumentBufferByPointer
struct Args { device float* out; texture2d<float> t; };
fragment float4 f_main(device Args* args [[buffer(2)]]) { args->out[3] = 8; return float4(args->out[3], args->t.get_width(), args[0].out[2], 0); }
//! gives 8 4 2 0
//! case MembersAreParameters
struct In { texture2d<float> t [[texture(1)]]; sampler s [[sampler(0)]]; constant float* data [[buffer(1)]]; constant float4& four [[buffer(4)]]; };
fragment float4 f_main(In in) { return in.t.sample(in.s, float2(0.9)) + float4(in.data[2]) + in.four; }
//! gives 5 5 17 3
