//! each Common
return float4(clamp(v.two, 0.0, 1.5), clamp(-v.one, 0.0, 1.0), clamp(v.half_, 0.0, 1.0), saturate(v.two)); //=> 1.5 0 0.5 1
return float4(mix(1.0, 3.0, v.half_), mix(v.v12, float2(3, 6), 0.5), mix(v.one, 9, 0)); //=> 2 2 4 1
return float4(step(1.5, v.v12), step(v.two, 2.0), step(v.v12, float2(1.5)).y); //=> 0 1 1 0
return float4(smoothstep(0.0, 2.0, v.one), smoothstep(0, 1, -v.one), smoothstep(0.0, 1.0, v.two), smoothstep(1.0, 2.0, 1.25 * v.one)); //=> 0.5 0 1 0.15625
return float4(sign(-v.two), sign(v.zero), sign(v.half_), sign(float2(-1, 5)).y); //=> -1 0 1 1
return float4(min(v.v12, 1.5), max(v.v12, float2(1.5, 0))); //=> 1 1.5 1.5 2
return float4(min3(v.two, 1.0, 3.0), max3(v.two, 1.0, 3.0), median3(v.two, 1.0, 3.0), fmin3(3.0, v.one, 2.0)); //=> 1 3 2 1
return float4(fmin(v.one, v.zero / v.zero), fmax(v.zero / v.zero, v.two), min(v.i3, -2), max(v.u5, 9u)); //=> 1 2 -2 9
//! each Rounding
float x = v.two + 0.75; return float4(floor(x), ceil(x), trunc(x), round(x)); //=> 2 3 2 3
float x = -v.two - 0.75; return float4(floor(x), ceil(x), trunc(x), round(x)); //=> -3 -2 -2 -3
return float4(round(v.half_), round(-v.half_), rint(v.half_), rint(v.one + 0.5)); //=> 1 -1 0 2
return float4(fract(v.two + 0.25), fract(-v.one + 0.75), fmod(v.two * 3.5, 4), fmod(-v.two * 3.5, 4)); //=> 0.25 0.75 3 -3
float w; float f = modf(v.two + 0.25, w); float g = modf(-v.one - 0.5, w); return float4(f, g, w, 0); //=> 0.25 -0.5 -1 0
int e; float m = frexp(v.two * 3, e); return float4(m, e, ldexp(v.half_, 3), ldexp(v.v12, int2(1, 2)).y); //=> 0.75 3 4 8
//! each Powers
return float4(pow(v.two, 3.0), powr(v.two, 0.5) * powr(v.two, 0.5), pow(v.v12, 2.0)); //=> 8 2 1 4
return float4(sqrt(v.two * 8), rsqrt(v.two * 2), exp2(v.two), log2(v.two * 4)); //=> 4 0.5 4 3
return float4(exp(v.zero), log(v.one), exp10(v.zero), log10(v.one)); //=> 1 0 1 0
return float4(fast::sqrt(v.two * 2), precise::sqrt(v.two * 2), fast::pow(v.two, 2.0), precise::exp2(v.one)); //=> 2 2 4 2
return float4(pow(v.zero, v.two), pow(v.two, v.zero), pow(v.one, 9.0), pow(v.half_, -1.0)); //=> 0 1 1 2
//! each Angles
return float4(sin(v.zero), cos(v.zero), tan(v.zero), sinpi(v.zero)); //=> 0 1 0 0
float c; float s = sincos(v.zero, c); return float4(s, c, asin(v.zero), acos(v.one)); //=> 0 1 0 0
return float4(atan2(v.zero, v.one), atan(v.zero), sinh(v.zero), cosh(v.zero)); //=> 0 0 0 1
return float4(abs(atan2(v.one, v.zero) - M_PI_2_F) < 1e-5, abs(atan2(v.zero, -v.one) - M_PI_F) < 1e-5, abs(atan(v.one) - M_PI_4_F) < 1e-5, abs(cospi(v.one) + 1) < 1e-5); //=> 1 1 1 1
float x = v.half_; return float4(abs(sin(x) * sin(x) + cos(x) * cos(x) - 1) < 1e-5, abs(tan(x) - sin(x) / cos(x)) < 1e-5, abs(tanh(v.zero)) < 1e-6, abs(asinh(sinh(x)) - x) < 1e-4); //=> 1 1 1 1
float2 c; float2 s = sincos(v.v12 * 0, c); return float4(s, c); //=> 0 0 1 1
//! each Geometry
return float4(dot(v.v12, float2(3, 4)), length(float2(3, 4) * v.one), distance(v.v12, float2(4, 6)), length_squared(v.v12)); //=> 11 5 5 5
return float4(cross(float3(1, 0, 0), float3(0, v.one, 0)), dot(v.v1234, float4(1))); //=> 0 0 1 10
return float4(normalize(float2(3, 4) * v.two), distance_squared(v.v12, float2(0)), normalize(float3(0, v.two, 0)).y); //=> 0.6 0.8 5 1
return float4(reflect(float2(1, -1) * v.one, float2(0, 1)), faceforward(float2(0, 1), float2(0, v.one), float2(0, 1))); //=> 1 1 0 -1
return float4(refract(float2(0, -1) * v.one, float2(0, 1), 0.5), length(half2(3, 4)), dot(half3(1), half3(2))); //=> 0 -1 5 6
//! each Relational
return float4(any(bool2(false, v.one > 0)), all(bool2(true, v.one > 5)), any(v.v1234 > 9), all(v.v1234 > 0)); //=> 1 0 0 1
float x = v.one / v.zero; return float4(isinf(x), isnan(v.zero / v.zero), isfinite(x), isnormal(v.one)); //=> 1 1 0 1
return float4(isnan(float2(v.one, v.zero / v.zero)), isordered(v.one, v.two), isunordered(v.one, v.zero / v.zero)); //=> 0 1 1 1
return float4(signbit(-v.one), signbit(v.one), select(1, 2, v.one > 0), select(v.i3, 9, v.one > 5)); //=> 1 0 2 3
return float4(copysign(v.two, -v.one), copysign(-v.two, v.one), fdim(v.two, 0.5), fdim(v.one, 2)); //=> -2 2 1.5 0
return float4(nextafter(v.one, 2.0) > 1, nextafter(v.one, 0.0) < 1, ilogb(v.two * 4), fma(v.two, 3.0, 1.0)); //=> 1 1 3 7
//! each Integer
return float4(abs(-v.i3), absdiff(v.i3, 10), absdiff(2u, v.u5), hadd(v.i3, 6)); //=> 3 7 3 4
return float4(popcount(v.u5), clz(v.u5), ctz(v.u5 << 3), clz(0u * v.u5)); //=> 2 29 3 32
return float4(reverse_bits(v.u5) == 0xA0000000u, rotate(v.u5, 31u) == 0x80000002u, popcount(-v.i3 * 0 - 1), ctz(0 * v.i3)); //=> 1 1 32 32
return float4(extract_bits(0xABCDu + 0 * v.u5, 4, 8), extract_bits(0xF0 + 0 * v.i3, 4, 4), insert_bits(v.u5, 3u, 4, 2), insert_bits(0xFF * v.i3 / 3, 0, 0, 4)); //=> 188 -1 53 240
return float4(addsat(uchar(250), uchar(v.u5 + 5)), subsat(v.u5, 9u), addsat(short(32767), short(v.i3)), subsat(char(-120), char(20))); //=> 255 0 32767 -128
return float4(mulhi(0x40000000, v.i3 + 5), mulhi(0x80000000u, v.u5), mad24(v.i3, 4, 5), mul24(v.u5, 6u)); //=> 2 2 17 30
return float4(rhadd(v.i3, 6), madhi(0x80000000u, v.u5, 10u), min3(v.i3, 1, 7), median3(v.u5, 1u, 9u)); //=> 5 12 1 5
int3 a = clamp(int3(-5, v.i3, 50), 0, 10); return float4(float3(a), max(int2(1, 9), v.i3).x); //=> 0 3 10 3
//! each Packing
return unpack_unorm4x8_to_float(0xFF00FF00u + 0 * v.u5); //=> 0 1 0 1
return float4(pack_float_to_unorm4x8(float4(1, 0, 0, v.zero)), pack_float_to_unorm2x16(float2(0, v.zero) + float2(1, 0)), unpack_unorm2x16_to_float(0xFFFFu + 0 * v.u5)); //=> 255 65535 1 0
return float4(unpack_snorm2x16_to_float(0x80017FFFu + 0 * v.u5), unpack_snorm4x8_to_float(0x0000817Fu + 0 * v.u5).xy); //=> 1 -1 1 -1
uint a = pack_float_to_unorm10a2(float4(1, 0, v.zero, 1)); float4 b = unpack_unorm10a2_to_float(a); return float4(a == 0xC00003FFu, b.x, b.y, b.w); //=> 1 1 0 1
float4 a = unpack_unorm10a2_to_float((v.u5 - 5u) | 1023u << 10 | 1u << 30); return a * float4(1, 1, 1, 3); //=> 0 1 0 1
ushort a = pack_float_to_unorm565(float3(1, v.zero, 1)); float3 b = unpack_unorm565_to_float(a); return float4(b, a == 0xF81F); //=> 1 0 1 1
float3 a = unpack_unorm565_to_float(ushort(v.i3 | 21 << 5 | 31 << 11)); return float4(a * float3(31, 63, 31), 0); //=> 3 21 31 0
float4 a = unpack_unorm4x8_srgb_to_float(0x800000FFu + 0 * v.u5); return float4(a.x, a.y, a.w * 255, pack_float_to_srgb_unorm4x8(float4(1, 0, v.zero, 0))); //=> 1 0 128 255
half4 a = unpack_unorm10a2_to_half(1023u * v.u5 / 5u); return float4(float3(a.xyz), pack_half_to_unorm565(half3(0, 0, half(v.one))) == 0xF800); //=> 1 0 0 1
uint a = pack_half_to_srgb_unorm4x8(half4(0.5h, 0, 0, 1)); return float4((a & 255u) == 188u, a >> 24, unpack_unorm4x8_srgb_to_half(0xFFu * (v.u5 - 4)).x, unpack_unorm565_to_half(ushort(31)).x); //=> 1 255 1 1
//! each Bits
return float4(as_type<uint>(v.one) == 0x3F800000u, as_type<float>(0x40000000u + 0 * v.u5), as_type<int>(-v.zero) < 0, as_type<float2>(uint2(0x3F800000u)).y); //=> 1 2 1 1
ushort2 a = as_type<ushort2>(0x00020001u * (v.u5 - 4)); return float4(a.x, a.y, as_type<uint>(ushort2(3, 0)), as_type<short>(ushort(65535))); //=> 1 2 3 -1
uchar4 c = as_type<uchar4>(v.one); half h = as_type<half>(ushort(0x4000 * v.one)); return float4(c.w, c.z, h, as_type<ushort>(half(1)) == 0x3C00); //=> 63 128 2 1
//! each Halves
half a = half(v.two); return float4(a * a, sqrt(a * 2), max(a, 3.0h), exp2(a)); //=> 4 2 3 4
half3 a = half3(v.v1234.xyz); return float4(dot(a, a), length(half2(3, 4)), (a * 2).z, clamp(a, 0.0h, 2.0h).z); //=> 14 5 6 2
half2x2 m = half2x2(1, 2, 3, 4); half2 x = m * half2(v.v12); return float4(float2(x), float2(m[1])); //=> 7 10 3 4
half a = 0.5h; float b = a * v.two; half c = mix(a, 1.5h, 0.5h); return float4(b, c, float(a) == v.half_, half(v.i3) / 2); //=> 1 1 1 1.5
//! each TypeTraits
return float4(is_same<float, float>::value, is_same_v<int, uint>, is_floating_point<half>::value, is_integral_v<ushort>); //=> 1 0 1 1
return float4(is_vector<float3>::value, is_scalar<float3>::value, is_signed_v<int>, is_unsigned_v<uint>); //=> 1 0 1 1
return float4(sizeof(conditional_t<true, float4, float>), sizeof(make_scalar_t<half4>), sizeof(remove_reference_t<int>), sizeof(make_unsigned_t<char>)); //=> 16 2 4 1
return float4(numeric_limits<uchar>::max(), numeric_limits<short>::min(), numeric_limits<float>::max() > 1e38, numeric_limits<half>::max()); //=> 255 -32768 1 65504
//! each Groups
return float4(quad_broadcast(fragCoord.x, 0), quad_broadcast(v.two, 1), quad_all(v.one > 0), quad_any(v.one > 5)); //=> 0.5 2 1 0
return float4(quad_shuffle_xor(fragCoord.x, 1) - fragCoord.x, quad_shuffle_xor(fragCoord.y, 2) - fragCoord.y, quad_sum(1.0f * v.one), quad_max(fragCoord.x)); //=> 1 1 4 1.5
return float4(quad_sum(fragCoord.x), quad_min(fragCoord.y), quad_product(v.two), quad_or(v.u5)); //=> 4 0.5 16 5
return float4(simd_all(v.one > 0), simd_any(v.one > 5), simd_max(v.i3), simd_min(v.two)); //=> 1 0 3 2
return float4(simd_broadcast_first(v.two), simd_or(v.u5), simd_sum(1u) >= 1u, simd_shuffle_xor(v.two, 0)); //=> 2 5 1 2
