//! case HalvesInABuffer
struct H { half a; half b; half2 c; half4 d; half e[3]; };
//! parameters , constant H& h [[buffer(3)]]
//! body
return float4(h.a + h.b, h.c.y, h.d.z, h.e[v.i3 - 1]);
//! gives 0.5 1.5 3 5
//! case HalfVectorsOfThree
struct H { half3 a; half b; packed_half3 c; half d; };
//! parameters , constant H& h [[buffer(3)]]
//! body
return float4(h.a.z, h.b, h.c.z, h.d);
//! gives 1 2 3.5 4
//! case HalfMatrices
struct H { half2x2 a; half4x3 b; };
//! parameters , constant H& h [[buffer(3)]]
//! body
int i = v.i3; return float4(h.a[1].x, h.b[0].x, h.b[3].z, h.b[i].y);
//! gives 1 2 9 8.5
//! case HalfPointers
//! parameters , constant half* h [[buffer(3)]], constant half4* q [[buffer(4)]]
//! body
constant half* p = h + 3; return float4(h[v.i3], p[2], q[1].x, h[v.u5 * 2]);
//! gives 1.5 2.5 0 5
//! case BytesInABuffer
struct B { uchar a; char b; uchar4 c; ushort d; short e; uint f; packed_uchar3 g; bool h; };
//! parameters , constant B& b [[buffer(2)]]
//! body
return float4(b.c.w, b.d, b.f == 0x0F0E0D0Cu, b.g.z + b.h);
//! gives 7 2312 1 19
//! case SignedSmallIntegers
//! parameters , constant char* c [[buffer(2)]], constant short2* s [[buffer(5)]]
//! body
return float4(c[200], c[100 + v.i3], s[1].y, 0);
//! gives -56 103 0 0
//! case SmallIntegersAreWritten
//! parameters , device uchar* c [[buffer(2)]], device short* s [[buffer(5)]], device half* h [[buffer(6)]]
//! body
c[5] = 250; c[6] = uchar(c[9] + 7); s[1] = -7; s[v.i3] = 9; h[1] = half(v.half_); h[2] = h[1] * 3;
return float4(c[5] + c[4], c[6], s[1] + s[3], h[2] + h[1]);
//! gives 254 16 2 2
//! case HalfVectorsAreWritten
struct H { half4 a; bool b; half2 c[2]; };
//! parameters , device H& h [[buffer(6)]]
//! body
h.a = half4(v.v1234); h.a.y = 9; h.a.zw = half2(6, 8); h.b = true; h.c[1] = half2(5, 6); H k = h; h.c[0].x = 1;
return float4(h.a.y + h.a.w, k.a.z, h.b, k.c[1].y + h.c[0].x);
//! gives 17 6 1 7
//! case PackedVectorsAreTight
struct P { packed_float3 a; float b; packed_float2 c; packed_float3 d[2]; float4 e; };
//! parameters , constant P& p [[buffer(1)]]
//! body
int i = v.i3 - 2; return float4(p.a.z + p.b, p.c.y, p.d[i].x, p.e.x);
//! gives 5 5 9 12
//! case VectorsOfThreeTakeFour
struct P { float3 a; float b; float3 c[2]; float2 d; };
//! parameters , constant P& p [[buffer(1)]]
//! body
return float4(p.a.z, p.b, p.c[v.i3 - 2].z, p.d.y);
//! gives 2 4 14 17
//! case MatricesInBuffers
struct P { float3x3 a; float2x2 b; float4x2 c; float a2; };
//! parameters , constant P& p [[buffer(1)]]
//! body
return float4(p.a[2].z, p.b[1].x, p.c[3].y, p.a2);
//! gives 10 14 23 24
//! case MatrixArraysInBuffers
struct P { float4x4 m[2]; float3x2 n[2]; };
//! parameters , constant P& p [[buffer(1)]]
//! body
int i = v.i3 - 2; return float4(p.m[i][2].w, p.n[i][0].y, (p.m[0] * float4(1, 0, 0, 0)).w, p.n[0][i + 1].x);
//! gives 27 39 3 36
//! case NestedStructsAreAligned
struct In { float a; float3 b; }; struct P { float x; In in; float y; In more[2]; };
//! parameters , constant P& p [[buffer(1)]]
//! body
return float4(p.in.a, p.in.b.y, p.y, p.more[1].b.x);
//! gives 4 9 12 28
//! case LongsInBuffers
struct P { float a; long b; ulong2 c; half d; };
//! parameters , constant P& p [[buffer(2)]]
//! body
return float4(p.b == 0x0F0E0D0C0B0A0908, p.c.y >> 60, sizeof(P), uint(p.c.x & 0xFF));
//! gives 1 1 48 16
//! case EnumsInBuffers
enum class K : uint { a, b = 0x03020100 }; struct P { K k; };
//! parameters , constant P& p [[buffer(2)]]
//! body
return float4(p.k == K::b, 0, 0, 0);
//! gives 1 0 0 0
//! case StructsOfBuffersCopyAsAWhole
struct P { float3 a; packed_float3 b; half c; float d[2]; };
//! parameters , constant P& p [[buffer(1)]], device P* out [[buffer(4)]]
//! body
P q = p; q.d[1] = 50; out[1] = q; return float4(out[1].a.y, out[1].b.z, out[1].d[0], out[1].d[1]);
//! gives 1 6 8 50
//! case SizesAndAlignments
struct A { float a; float3 b; }; struct B { char a; short b; int c; bool d; }; struct C { packed_float3 a; half b; };
//! body
return float4(sizeof(A), sizeof(B), sizeof(C), alignof(float4) + alignof(packed_float4));
//! gives 32 12 16 20
