//! case OneDimensional
//! parameters , texture1d<float> t [[texture(0)]], texture1d_array<float> a [[texture(1)]]
//! body
constexpr sampler s(filter::nearest); return float4(t.read(uint(v.i3)).x, t.sample(s, 0.625).x, a.sample(s, 0.375, 2).z, a.read(1u, 1u).z);
//! gives 3 2 33 17
//! case ThreeDimensional
//! parameters , texture3d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest); return float4(t.read(uint3(1, 2, 3)).z, t.sample(s, float3(0.125, 0.375, 0.625)).z, t.get_depth(), t.get_width());
//! gives 57 36 4 4
//! case CubesAreSampledByDirection
//! parameters , texturecube<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest); float4 px = t.sample(s, float3(1, 0.25, 0.25)); float4 nz = t.sample(s, float3(0.25, 0.25, -1)); return float4(floor(px.z / 16), floor(nz.z / 16), t.sample(s, float3(0, -1, 0), level(0)).w, t.get_width());
//! gives 0 5 1 4
//! case CubeArrays
//! parameters , texturecube_array<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest); float4 a = t.sample(s, float3(0, 1, 0), 1); return float4(floor(a.z / 16), t.get_array_size(), 0, 0);
//! gives 8 2 0 0
//! case TwoDimensionalArrays
//! parameters , texture2d_array<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest); return float4(t.sample(s, float2(0.375, 0.625), 2).z, t.read(uint2(1, 2), 1).z, t.get_array_size(), t.sample(s, float2(0.1), uint(v.i3 - 2), level(0)).z);
//! gives 41 25 3 16
//! case IntegerTextures
//! parameters , texture2d<int> t [[texture(0)]], texture2d<uint> u [[texture(1)]]
//! body
constexpr sampler s(filter::nearest); int4 a = t.read(uint2(3, 2)); uint4 b = u.sample(s, float2(0.9, 0.9)); return float4(a.x - 5, a.z, b.z, b.w);
//! gives -2 11 15 1
//! case HalfTextures
//! parameters , texture2d<half> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest); half4 a = t.sample(s, float2(0.625, 0.375)); return float4(a) * 2;
//! gives 4 2 12 2
//! case ShortTextures
//! parameters , texture2d<short> t [[texture(0)]], texture2d<ushort> u [[texture(1)]]
//! body
short4 a = t.read(ushort2(3, 2)); ushort4 b = u.read(ushort2(1, 1)); return float4(a.x, a.z, b.z, b.w);
//! gives 3 11 5 1
//! case LevelsAreChosen
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest, mip_filter::nearest); return float4(t.sample(s, float2(0.75), level(1)).w, t.read(uint2(1), 1).w, t.get_num_mip_levels(), t.get_width(2) + t.get_height(1) * 10);
//! gives 2 2 3 21
//! case BiasAndGradients
//! parameters , texture2d<float> t [[texture(0)]], texture3d<float> d [[texture(1)]]
//! body
constexpr sampler s(filter::nearest, mip_filter::nearest); return float4(t.sample(s, float2(0.5), bias(1)).w, t.sample(s, float2(0.5), gradient2d(float2(0.5, 0), float2(0, 0.5))).w, d.sample(s, float3(0.5), gradient3d(float3(0), float3(0))).w, t.sample(s, fragCoord.xy / 4, bias(2.0)).w);
//! gives 1 2 1 3
//! case FinestLevelIsClamped
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest, mip_filter::nearest); return float4(t.sample(s, fragCoord.xy / 4, min_lod_clamp(1)).w, t.sample(s, fragCoord.xy / 4).w, t.sample(s, fragCoord.xy / 4, bias(1), min_lod_clamp(0)).w, t.calculate_clamped_lod(s, fragCoord.xy));
//! gives 2 1 2 2
//! case OffsetsMoveByTexels
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest); return float4(t.sample(s, float2(0.125), int2(1, 2)).xy, t.sample(s, float2(0.625), level(0), int2(-1)).xy);
//! gives 1 2 1 1
//! case GatherTakesFourTexels
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::linear); return t.gather(s, float2(0.5), int2(0), component::z) + float4(t.gather(s, float2(0.5)).x);
//! gives 10 11 7 6
//! case GatherOfComponents
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::linear); float4 y = t.gather(s, float2(0.25), int2(0), component::y); float4 o = t.gather(s, float2(0.25), int2(1, 0), component::x); return float4(y.x, y.z, o.x, o.y);
//! gives 1 0 1 2
//! case DepthTexturesAreScalars
//! parameters , depth2d<float> d [[texture(0)]], depth2d_array<float> a [[texture(1)]], depthcube<float> c [[texture(2)]]
//! body
constexpr sampler s(filter::nearest); float x = d.sample(s, float2(0.9)); return float4(x * 128, d.read(uint2(1, 2)) * 128, a.sample(s, float2(0.1), 2) * 128, floor(c.sample(s, float3(0, 1, 0)) * 8));
//! gives 15 9 32 2
//! case ComparisonSampling
//! parameters , depth2d<float> d [[texture(0)]]
//! body
constexpr sampler s(compare_func::less, filter::nearest); constexpr sampler g(coord::normalized, compare_func::greater_equal); float2 at = float2(0.9); return float4(d.sample_compare(s, at, 0.1), d.sample_compare(s, at, 0.2), d.sample_compare(g, at, 0.2), d.sample_compare(s, at, 0.1, level(0)));
//! gives 1 0 1 1
//! case LinearComparisonBlends
//! parameters , depth2d<float> d [[texture(0)]]
//! body
constexpr sampler s(compare_func::less, filter::linear), p(filter::linear); return float4(d.sample_compare(s, float2(0.5), 7.5 / 128), d.gather_compare(s, float2(0.5), 9.5 / 128).x, d.gather(p, float2(0.5)).w * 128, 0);
//! gives 0.5 0 5 0
//! case ComparisonOnCubesAndArrays
//! parameters , depthcube<float> c [[texture(0)]], depth2d_array<float> a [[texture(1)]]
//! body
constexpr sampler s(compare_func::less_equal); return float4(c.sample_compare(s, float3(0, 1, 0), 0.1), c.sample_compare(s, float3(1, 0, 0), 0.2), a.sample_compare(s, float2(0.1), 2, 0.2), a.sample_compare(s, float2(0.1), 0, 0.2, level(0)));
//! gives 1 0 1 0
//! case SamplerAddressModes
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler a(address::repeat), b(address::mirrored_repeat), c(s_address::clamp_to_edge, t_address::repeat), d(address::clamp_to_zero); return float4(t.sample(a, float2(1.3, 0)).x, t.sample(b, float2(1.1, 0)).x, t.sample(c, float2(2, 1.3)).z, t.sample(d, float2(1.5)).w);
//! gives 1 3 7 0
//! case SamplerBorderColours
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler a(address::clamp_to_border, border_color::opaque_white), b(address::clamp_to_border, border_color::opaque_black); return float4(t.sample(a, float2(-1)).xw, t.sample(b, float2(-1)).xw);
//! gives 1 1 0 1
//! case PixelCoordinates
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(coord::pixel, filter::nearest); return t.sample(s, float2(2.5, 1.5));
//! gives 2 1 6 1
//! case LinearFilterOfMips
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::linear, mip_filter::linear); return float4(t.sample(s, float2(0.5), level(0.5)).w, t.sample(s, float2(0.5), level(1.25)).w, t.sample(s, float2(0.5)).x, 0);
//! gives 1.5 2.25 1.5 0
//! case LodClampOfSamplers
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest, mip_filter::nearest, lod_clamp(1.0f, 1.0f), max_anisotropy(4)); return float4(t.sample(s, float2(0.5), level(0)).w);
//! gives 2 2 2 2
//! case MultisampleTexturesAreRead
//! parameters , texture2d_ms<float> t [[texture(0)]], texture2d_ms_array<float> a [[texture(1)]]
//! body
return t.read(uint2(1, 2), uint(v.i3)) + float4(t.get_num_samples(), a.read(uint2(0), 1, 2).y, t.get_width(), a.get_array_size());
//! gives 5 4 7 7
//! case MultisampleDepth
//! parameters , depth2d_ms<float> t [[texture(0)]]
//! body
return float4(t.read(uint2(1), 0), t.get_num_samples(), t.get_height(), 0);
//! gives 0.5 4 4 0
//! case TexturesAreWritten
//! parameters , texture2d<float, access::read_write> t [[texture(0)]]
//! body
uint2 at = uint2(fragCoord.xy); float4 was = t.read(at); t.write(float4(9, was.yz, v.two), at); t.fence(); return t.read(at);
//! gives 9 0 0 2
//! case WriteOnlyTextures
//! parameters , texture2d<float, access::write> t [[texture(0)]], texture2d<uint, access::write> u [[texture(1)]], texture2d_array<half, access::write> h [[texture(2)]]
//! body
t.write(float4(1), uint2(1)); u.write(uint4(2), uint2(1)); h.write(half4(1), uint2(0), 2); return float4(t.get_width(), u.get_height(), h.get_array_size(), t.get_num_mip_levels());
//! gives 4 4 3 1
//! case ReadAccess
//! parameters , texture2d<float, access::read> t [[texture(0)]]
//! body
return t.read(uint2(3, 1));
//! gives 3 1 7 1
//! case ReadAccessIsNotSampled
//! parameters , texture2d<float, access::read> t [[texture(0)]], sampler s [[sampler(0)]]
//! body
return t.sample(s, float2(0));
//! refused 'texture2d<float>' is read, not sampled: its access is not access::sample
//! case SampledTexturesAreNotWritten
//! parameters , texture2d<float> t [[texture(0)]]
//! body
t.write(float4(0), uint2(0)); return 0;
//! refused 'texture2d<float>' cannot be written
//! case TextureBuffers
fragment float4 f_main(texture_buffer<float> t [[texture(0)]]) { return t.read(3u) + t.get_width(); }
//! compiles
//! case NullTextures
//! parameters , texture2d<float> t [[texture(0)]]
//! body
return float4(is_null_texture(t));
//! gives 0 0 0 0
//! case TexturesWithoutNumbers
//! parameters , texture2d<float> a, texture2d<float> b, sampler s
//! body
return a.sample(s, float2(0.9)) + b.read(uint2(1));
//! gives 4 4 20 2
//! case SamplersAtProgramScope
constexpr sampler kNear(filter::nearest, address::repeat);
constant constexpr sampler kOther = sampler(filter::linear);
float4 look(texture2d<float> t, sampler s) { return t.sample(s, float2(1.375, 0.125)); }
//! parameters , texture2d<float> t [[texture(0)]]
//! body
return look(t, kNear) + look(t, kOther).y;
//! gives 1 0 1 1
//! case OnlyDepthTexturesCompare
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s; return float4(t.sample_compare(s, float2(0), 0.5));
//! refused only depth textures compare
//! case DerivativesOfCoordinates
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler s(filter::nearest); float2 uv = fragCoord.xy / 4; return t.sample(s, uv, gradient2d(dfdx(uv), dfdy(uv)));
//! gives 0 0 0 1
