//! case StructOfTextureAndSampler
struct Ctx { texture2d<float> t; sampler s; };
float4 look(Ctx c, float2 at) { return c.t.sample(c.s, at); }
//! parameters , texture2d<float> tex [[texture(0)]], sampler smp [[sampler(0)]]
//! body
Ctx c = {tex, smp}; return look(c, float2(0.375, 0.625));
//! gives 1 2 9 1
//! case StructOfResourcesByDesignators
struct Ctx { float2 at; texture2d<float> t; float scale; };
float4 look(Ctx c) { constexpr sampler s(filter::nearest); return c.t.sample(s, c.at) * c.scale; }
//! parameters , texture2d<float> tex [[texture(0)]]
//! body
return look(Ctx{.at = float2(0.875, 0.125), .t = tex, .scale = v.two});
//! gives 6 0 6 2
//! case StructOfReferencesToLocals
struct Ctx { thread float& out; thread float3& color; };
void go(Ctx c, float by) { c.out += by; c.color.y = by; }
//! body
float x = v.one; float3 k = float3(7); Ctx c = {x, k}; go(c, v.two); go(c, 3); return float4(x, k);
//! gives 6 7 3 7
//! case StructOfPointers
struct Ctx { constant float* data; int count; };
float sum(Ctx c) { float s = 0; for (int i = 0; i < c.count; i++) s += c.data[i]; return s; }
//! parameters , constant float* data [[buffer(1)]]
//! body
Ctx c; c.data = data + 2; c.count = v.i3; return float4(sum(c), *c.data, c.data[1], 0);
//! gives 9 2 3 0
//! case StructOfPointersToStructs
struct P { float a; float b; }; struct Ctx { thread P* p; };
void go(thread Ctx& c) { c.p->b += c.p->a; }
//! body
P p = {v.one, v.two}; Ctx c = {&p}; go(c); return float4(p.b, c.p->b, 0, 0);
//! gives 3 3 0 0
//! case MembersFilledOneByOne
struct Ctx { texture2d<float> t; sampler s; float n; };
void fill(thread Ctx& c, texture2d<float> t, sampler s) { c.t = t; c.s = s; c.n = 2; }
float4 look(thread const Ctx& c) { return c.t.sample(c.s, float2(0.1)) * c.n; }
//! parameters , texture2d<float> tex [[texture(2)]], sampler smp [[sampler(1)]]
//! body
Ctx c; fill(c, tex, smp); return look(c);
//! gives 0 0 0 2
//! case MemberFunctionsOnResources
struct Shader { texture2d<float> channel; float time; float4 image(float2 at) { return look(at) + time; }
  float4 look(float2 at) { constexpr sampler s(filter::nearest, address::repeat); return channel.sample(s, at); } };
//! parameters , texture2d<float> tex [[texture(0)]]
//! body
Shader s{tex, v.two}; s.time += 1; return s.image(float2(1.375, 0.1));
//! gives 4 3 4 4
//! case ConstructorsTakeResources
struct Shader { texture2d<float> channel; thread float& acc; Shader(texture2d<float> t, thread float& a) : channel(t), acc(a) {} void go() { acc += channel.get_width(); } };
//! parameters , texture2d<float> tex [[texture(0)]]
//! body
float x = v.one; Shader s(tex, x); s.go(); s.go(); return float4(x);
//! gives 9 9 9 9
//! case StructsOfResourcesNest
struct In { texture2d<float> t; float k; }; struct Out { In a; In b; float m; };
float go(Out o) { return o.a.t.read(uint2(1, 2)).z * o.a.k + o.b.k + o.m; }
//! parameters , texture2d<float> tex [[texture(0)]]
//! body
Out o = {{tex, v.two}, {tex, 100}, 1000}; In copy = o.a; copy.k = 5; return float4(go(o), copy.k, o.a.k, 0);
//! gives 1118 5 2 0
//! case StructOfResourcesIsReturned
struct Ctx { texture2d<float> t; float k; };
Ctx make(texture2d<float> t, float k) { Ctx c; c.t = t; c.k = k; return c; }
Ctx twice(Ctx c) { c.k *= 2; return c; }
//! parameters , texture2d<float> tex [[texture(0)]]
//! body
Ctx c = twice(make(tex, v.two)); return float4(c.k, c.t.get_height(), make(tex, 9).k, 0);
//! gives 4 4 9 0
//! case PlainMembersChangeInLoopsAndBranches
struct Ctx { texture2d<float> t; float sum; int n[2]; };
void add(thread Ctx& c, float x) { if (x > 1) c.sum += x; else c.sum += 10; c.n[1] += 1; }
//! parameters , texture2d<float> tex [[texture(0)]]
//! body
Ctx c = {tex, 0, {0, 0}}; for (int i = 0; i < 4; i++) add(c, i); return float4(c.sum, c.n[1], c.t.get_width(), 0);
//! gives 25 4 4 0
//! case TexturesByReference
float4 go(thread const texture2d<float>& t, thread const sampler& s) { return t.sample(s, float2(0.375)); }
//! parameters , texture2d<float> tex [[texture(0)]], sampler smp [[sampler(0)]]
//! body
return go(tex, smp);
//! gives 1 1 5 1
//! case LocalTextureNames
//! parameters , texture2d<float> tex [[texture(0)]], sampler smp [[sampler(0)]]
//! body
texture2d<float> t = tex; auto u = tex; sampler s = smp; return t.sample(s, float2(0.9)) + u.read(uint2(0));
//! gives 3 3 15 2
//! case ArraysOfTextures
float4 at(array<texture2d<float>, 2> t, int i) { return i == 0 ? t[0].read(uint2(1)) : t[1].read(uint2(2)); }
//! parameters , array<texture2d<float>, 2> tex [[texture(1)]]
//! body
return at(tex, v.i3) + tex[0].read(uint2(3, 0));
//! gives 5 2 13 2
//! case TextureArraysAreWalkedByConstants
//! parameters , array<texture2d<float>, 3> tex [[texture(0)]]
//! body
float4 s = 0; s += tex[0].read(uint2(1)); s += tex[1].read(uint2(1)); s += tex[2].read(uint2(1)); return s;
//! gives 3 3 15 3
//! case ResourceThatIsNotKnown
struct Ctx { texture2d<float> t; };
//! parameters , texture2d<float> a [[texture(0)]], texture2d<float> b [[texture(1)]]
//! body
Ctx c = {a}; if (v.one > 0) c.t = b; return c.t.read(uint2(0));
//! refused this 'texture2d<float>' already stands for another one
//! case PointerToMemberOfABuffer
struct B { float a[4]; float3 c; };
float get(constant float* p, int i) { return p[i]; }
//! parameters , constant B& b [[buffer(1)]]
//! body
constant float* p = &b.a[1]; constant float3& c = b.c; return float4(get(p, 1), *(p + 2), get(b.a, v.i3), c.z);
//! gives 2 3 3 6
//! case PointersCompareAndStep
//! parameters , device float* data [[buffer(1)]]
//! body
device float* p = data + 4; p[1] = v.two; device float& r = p[2]; r = p[-1] + 4; return float4(data[5], data[6], *p, p[v.i3]);
//! gives 2 7 4 7
