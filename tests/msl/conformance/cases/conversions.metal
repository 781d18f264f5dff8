//! each Scalars
return float4(int(2.9 * v.one), int(-2.9 * v.one), uint(3.7 * v.one), int(true)); //=> 2 -2 3 1
return float4(bool(v.half_), bool(v.zero), bool(v.i3), bool(-0.0f)); //=> 1 0 1 0
return float4(uchar(v.i3 * 100), char(v.i3 * 60), short(v.i3 * 20000), ushort(-v.i3)); //=> 44 -76 -5536 65533
return float4(float(0xFFFFFFFFu) > 4e9, float(-v.i3), half(v.two) / 4, float(1L << 33) / float(1 << 30)); //=> 1 -3 0.5 8
char c = -v.i3; uchar u = uchar(c); ushort s = ushort(c); uint i = uint(c); return float4(c, u, s, i == 0xFFFFFFFDu); //=> -3 253 65533 1
short s = -v.i3; uchar c = s; ulong l = ulong(s); return float4(c, l == 0xFFFFFFFFFFFFFFFDul, long(s), ushort(s)); //=> 253 1 -3 65533
uchar c = 200; char d = c; short e = d; int f = c; return float4(c, d, e, f) * v.one; //=> 200 -56 -56 200
int a = v.two + 0.9; uint b = 2.9f * v.one; bool c = 0.1 * v.one; return float4(a, b, c, a + true); //=> 2 2 1 3
return float4(static_cast<int>(v.two * 1.5), (int)(v.two * 1.5) / 2, int(7) / 2.0f, (float)7 / 2); //=> 3 1 3.5 3.5
return float4((half)v.two, half(0.1) == half(0.1f), float(half(0.5)), half(v.i3) * 2); //=> 2 1 0.5 6
//! each VectorsToOthers
return float4(int4(v.v1234 * 1.6)); //=> 1 3 4 6
return float4(uchar4(v.v1234 * 100)); //=> 100 200 44 144
return float4(half4(v.v1234) * 0.5h); //=> 0.5 1 1.5 2
return float4(short4(-v.v1234)) + float4(ushort4(short4(-1)).x == 65535); //=> 0 -1 -2 -3
return float4(bool4(v.v1234 - v.one)) + float4(int4(bool4(1, 0, 1, 0))); //=> 1 1 2 1
return float4(float2(int2(7, -7) / 2), float2(uint2(7) / 2u)); //=> 3 -3 3 3
float3 f = float3(1.5, 2.5, -3.5) * v.one; int3 i = int3(f); uint2 u = uint2(f.xy); return float4(float3(i), u.y); //=> 1 2 -3 2
int3 a = int3(v.v1234.xyz); float3 b = float3(a) / 2; return float4(b, a.z / 2); //=> 0.5 1 1.5 1
//! each Promotions
uchar a = 255, b = 255; return float4(a + b, a * b, (a << 4), uchar(a + b)) * v.one; //=> 510 65025 4080 254
short a = 30000; return float4(a + a, short(a + a), a * 2, -a) * v.one; //=> 60000 -5536 60000 -30000
char a = 'a'; return float4(a + 1, 'b' - a, char(a + 1) == 'b', sizeof('a')) * v.one; //=> 98 1 1 1
bool b = v.one > 0; return float4(b + b, -b, b * 5, ~b); //=> 2 -1 5 -2
return float4(sizeof(v.i3 + 1L), sizeof(1 + 1u), sizeof(1h + 1), sizeof(1.0f + 1.0h)); //=> 8 4 2 4
return float4(1 / 2 * 4, 1 / 2.0 * 4, 3 / 2 + 0.5, 7 % 3 / 2.0) * v.one; //=> 0 2 1.5 0.5
//! each Literals
return float4(0x10, 010, 0b101, 1e2) * v.one; //=> 16 8 5 100
return float4(1.5f, 1.5h, 1.5, .5e1) * v.one; //=> 1.5 1.5 1.5 5
return float4('A', '\n', '\0', '\\') * v.one; //=> 65 10 0 92
return float4(10u, 10U, 10L > 0, 10ul > 0) * v.one; //=> 10 10 1 1
return float4(4294967295u > 0, 2147483647 > 0, -2147483648 < 0, 0x7fffffff + 0u > 0) * v.one; //=> 1 1 1 1
return float4(true, false, 1'000'000 / 1000, 0xFFu) * v.one; //=> 1 0 1000 255
//! each Sizes
return float4(sizeof(float3), sizeof(packed_float3), sizeof(half3), sizeof(bool)); //=> 16 12 8 1
return float4(sizeof(float3x3), sizeof(float2x2), sizeof(half4x4), sizeof(float4x3)); //=> 48 16 32 64
return float4(alignof(float4), alignof(packed_float4), alignof(uchar2), alignof(float3x2)); //=> 16 4 2 8
struct S { char a; int b; short c; }; return float4(sizeof(S), alignof(S), sizeof(S[3]), sizeof(array<S, 2>)); //=> 12 4 36 24
struct S { float3 a; float b; packed_float3 c; float d; }; return float4(sizeof(S), sizeof(ulong), sizeof(size_t), sizeof(half)); //=> 48 8 8 2
