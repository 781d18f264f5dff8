//! case ArraysOfTexturesAreIndexedAtRunTime
//! parameters , array<texture2d<float>, 3> t [[texture(0)]]
//! body
return t[v.i3 - 2].read(uint2(1, 2)) + float4(t[v.u5 - 4u].get_width(), 0, 0, 0);
//! gives 5 2 9 1
//! case ChosenTexturesAreSampled
//! parameters , array<texture2d<float>, 2> t [[texture(0)]], sampler s [[sampler(0)]]
//! body
int i = v.i3 - 2; return t[i].sample(s, float2(0.9)) + t[i].sample(s, float2(0.9), level(1)).w + t[i].sample(s, float2(0.4), bias(0)).x;
//! gives 5 5 17 3
//! case AWildIndexStaysInside
//! parameters , array<texture2d<float>, 2> t [[texture(0)]]
//! body
return t[v.u5 * 100].read(uint2(1, 1));
//! gives 1 1 5 1
//! case ChosenTexturesGoToFunctions
float4 look(texture2d<float> t, uint2 at) { return t.read(at); }
//! parameters , array<texture2d<float>, 2> t [[texture(0)]]
//! body
texture2d<float> one = t[v.i3 - 2]; return look(t[v.i3 - 3], uint2(2, 0)) + look(one, uint2(0, 1));
//! gives 2 1 6 2
//! case StructsOfResourcesAreIndexedAtRunTime
struct Material { texture2d<float> t; float scale; }; struct Scene { Material m[2]; };
//! parameters , constant Scene& scene [[buffer(1)]]
//! body
int i = v.i3 - 2; float s = scene.m[i].scale; return float4(scene.m[i].t.get_width(), s == scene.m[1].scale, 0, 0);
//! gives 4 1 0 0
//! case ConditionsChooseTextures
//! parameters , texture2d<float> a [[texture(0)]], texture2d<float> b [[texture(1)]], sampler s [[sampler(0)]]
//! body
texture2d<float> t = v.one > 0 ? a : b; return t.read(uint2(1, 1)) + (v.two > 3 ? a : b).sample(s, float2(0.1)).w;
//! gives 2 2 6 2
//! case ChosenSamplers
//! parameters , texture2d<float> t [[texture(0)]]
//! body
constexpr sampler a(filter::nearest), b(filter::linear); sampler s = v.one > 0 ? b : a; return t.sample(s, float2(0.5));
//! gives 1.5 1.5 7.5 1
//! case ChosenTexturesAreWritten
//! parameters , array<texture2d<float, access::write>, 2> t [[texture(0)]]
//! body
t[v.i3 - 2].write(float4(1), uint2(0)); return float4(t[v.i3 - 2].get_height());
//! gives 4 4 4 4
//! case LoopsWalkArraysOfTextures
//! parameters , array<texture2d<float>, 3> t [[texture(0)]]
//! body
float4 s = 0; for (uint i = 0; i < t.size(); ++i) s += t[i].read(uint2(i, 1)); return s;
//! gives 3 3 15 3
//! case CubeTexelsAreReadByFace
//! parameters , texturecube<float> t [[texture(0)]], texturecube_array<float> a [[texture(1)]]
//! body
float4 x = t.read(uint2(1, 2), v.i3); return float4(x.xy, floor(x.z / 16), floor(a.read(uint2(3, 0), 2, 1).z / 16));
//! gives 1 2 3 8
//! case EveryFaceAndCornerOfACube
//! parameters , texturecube<float> t [[texture(0)]]
//! body
float bad = 0; for (uint f = 0; f < 6; f++) for (uint y = 0; y < 4; y++) for (uint x = 0; x < 4; x++) { float4 c = t.read(uint2(x, y), f); bad += c.x != x || c.y != y || floor(c.z / 16) != f; } return float4(bad, t.read(uint2(0), 0, 1).w, 0, 0);
//! gives 0 2 0 0
