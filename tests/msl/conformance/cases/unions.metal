//! case MembersShareTheirBits
union Bits { float f; uint u; };
//! body
Bits b; b.f = v.one; uint u = b.u; b.u = 0x40000000u; return float4(u == 0x3F800000u, b.f, sizeof(Bits), 0);
//! gives 1 2 4 0
//! case SmallMembers
union Word { uint u; uchar4 c; ushort2 s; char b; };
//! body
Word w; w.u = 0x04030201u + 0u * v.u5; w.c.y = 0xFF; w.s.y += ushort(1); return float4(w.c.x, w.s.x == 0xFF01, w.s.y == 0x0404, w.b);
//! gives 1 1 1 1
//! case ArraysInUnionsAreIndexed
union Matrix { float4 v; float a[4]; };
//! body
Matrix m; m.v = v.v1234; m.a[v.i3 - 1] += 10; float s = 0; for (int i = 0; i < 4; i++) s += m.a[i]; return float4(m.v.z, s, m.a[v.i3], m.v[1]);
//! gives 13 20 4 2
//! case StructsInUnions
struct Parts { ushort low; ushort high; }; union Whole { uint u; Parts p; };
//! body
Whole w; w.u = 0x00050003u + 0u * v.u5; w.p.high *= 2; return float4(w.p.low, w.p.high, w.u >> 16, 0);
//! gives 3 10 10 0
//! case TheFirstMemberIsInitialised
union Bits { uint u; float f; };
//! body
Bits a = {0x40400000u}; Bits b{}; Bits c = {.f = 1.0f}; Bits d = a; return float4(a.f, b.f, c.u == 0x3F800000u, d.f);
//! gives 3 0 1 3
//! case UnionsInsideStructsAndFunctions
struct Tagged { int kind; union { float f; int i; } value; };
float read(Tagged t) { return t.kind == 0 ? t.value.f : float(t.value.i); }
//! body
Tagged a; a.kind = 0; a.value.f = v.two; Tagged b; b.kind = 1; b.value.i = v.i3; return float4(read(a), read(b), sizeof(Tagged), 0);
//! gives 2 3 8 0
//! case UnionsInBuffers
union Cell { float4 v; float a[4]; }; struct Row { Cell cells[2]; };
//! parameters , constant Row& r [[buffer(1)]], constant Cell* c [[buffer(2)]]
//! body
Cell copy = r.cells[1]; return float4(r.cells[0].v.z, r.cells[1].a[v.i3], copy.v.y, as_type<uint>(c[0].a[1]) == 0x07060504u);
//! gives 2 7 5 1
//! case UnionsAreWrittenThroughReferencesAndPointers
union Bits { float f; uint u; };
void set(thread Bits& b, float x) { b.f = x; } void bump(thread uint* u) { *u += 1; } void half_(thread float& f) { f *= 0.5; }
//! body
Bits b; set(b, v.two); half_(b.f); bump(&b.u); return float4(b.u == 0x3F800001u, 0, 0, 0);
//! gives 1 0 0 0
//! case UnionsInLoops
union Bits { float f; uint u; };
//! body
Bits b; b.f = 0; for (int i = 0; i < v.i3; i++) { if (i == 1) b.u |= 0x3F800000u; else b.f += 1; } return float4(b.f);
//! gives 2 2 2 2
//! case HalvesAndVectorsInUnions
union Pack { half2 h; uint u; packed_half4 q; };
//! body
Pack p; p.u = 0x40003C00u + 0u * v.u5; return float4(p.h.x, p.h.y, sizeof(Pack), p.q.y);
//! gives 1 2 8 2
//! case NoResourcesInUnions
union Bad { texture2d<float> t; float f; };
//! body
return 0;
//! refused a union cannot hold a member of the type 'texture2d<float>'
