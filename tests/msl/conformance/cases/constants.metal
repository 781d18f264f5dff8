//! case FunctionConstants
constant bool kUse [[function_constant(0)]]; constant int kCount [[function_constant(3)]]; constant float kScale [[function_constant(4)]]; constant uint kBits [[function_constant(5)]];
//! body
float s = 0; for (int i = 0; i < kCount; i++) s += 1; return float4(kUse ? 1 : 2, s, kScale, kBits + 1);
//! gives 1 30 4.5 51
//! case FunctionConstantsThatAreNotGiven
constant int kA [[function_constant(1)]]; constant int kB [[function_constant(101)]];
constant int kBOr7 = is_function_constant_defined(kB) ? kB : 7; constant bool kHasA = is_function_constant_defined(kA);
//! body
return float4(kBOr7, kHasA, is_function_constant_defined(kB), kA);
//! gives 7 1 0 10
//! case FunctionConstantsOfHalfAndShort
constant half kH [[function_constant(2)]]; constant ushort kS [[function_constant(6)]];
//! body
return float4(kH, kS, kS / 7, 0);
//! gives 2.5 60 8 0
//! case FunctionConstantsGuardParameters
constant bool kTex [[function_constant(0)]];
//! parameters , texture2d<float> t [[texture(0), function_constant(kTex)]]
//! body
if (kTex) return t.read(uint2(1)); return 0;
//! gives 1 1 5 1
//! case FunctionConstantsAreScalars
constant float4 kV [[function_constant(0)]];
//! body
return kV;
//! refused a function constant of the type 'float4' is not supported
//! case FunctionConstantsAreNoArrayLengths
constant int kN [[function_constant(0)]];
//! body
float a[kN]; return 0;
//! refused the length of an array must be an integer known when compiling
//! case ProgramScopeValues
constant float kPi = 3.25; constant float3 kAxis = float3(0, 1, 2); constant int kTable[2][3] = {{1, 2, 3}, {4, 5, 6}}; constexpr constant float kTwice = kPi * 2; const constant float kOld = 1;
//! body
return float4(kTwice, kAxis.z, kTable[v.i3 - 2][v.i3 - 1], kOld);
//! gives 6.5 2 6 1
//! case ProgramScopeStructs
struct Light { float3 at; float power; }; constant Light kLights[2] = {{float3(1), 2}, {.at = float3(3, 4, 5), .power = 6}}; constant Light kOne = {float3(7), 8};
//! body
int i = v.i3 - 2; return float4(kLights[i].at.y, kLights[i].power, kLights[0].power, kOne.at.x + kOne.power);
//! gives 4 6 2 15
//! case ProgramScopeMatrices
constant float3x3 kM = float3x3(float3(1, 2, 3), float3(4, 5, 6), float3(7, 8, 9)); constant float2x2 kId = float2x2(1);
//! body
return float4((kM * float3(1, 0, 1)).y, kM[1][2], (kId * v.v12));
//! gives 10 6 1 2
//! case ProgramScopeCalls
constant float kRoot = sqrt(16.0); constant float3 kN = normalize(float3(0, 3, 4)); static constant float kLocal = max(1.0, 2.0);
//! body
return float4(kRoot, kN.yz, kLocal);
//! gives 4 0.6 0.8 2
//! case ArraysOfTheLibrary
constant array<float, 3> kA = {1, 2, 3}; constant array<float2, 2> kB = {{ {1, 2}, {3, 4} }};
//! body
array<int, 4> c = {{v.i3, 2, 3, 4}}; float s = 0; for (float x : kA) s += x; return float4(s, kB[1].y, c[0] + c[3], c.size());
//! gives 6 4 7 4
//! case LocalConstantTables
float get(int i) { constexpr float t[3] = {5, 6, 7}; const int u[] = {1, 2, 3}; return t[i] * u[i]; }
//! body
return float4(get(v.i3 - 1), get(0), 0, 0);
//! gives 21 5 0 0
//! case NamespaceConstants
namespace a { constant float k = 2; namespace b { constant float k = 3; } inline namespace c { constant float m = 4; } } namespace z = a::b; using a::b::k;
//! body
return float4(a::k, z::k, k, a::c::m);
//! gives 2 3 3 4
//! case AtomicCounters
//! parameters , device atomic_uint* c [[buffer(4)]], device atomic_int& d [[buffer(5)]]
//! body
uint a = atomic_fetch_add_explicit(&c[0], 0u, memory_order_relaxed); atomic_store_explicit(&c[1], 7u, memory_order_relaxed); atomic_fetch_max_explicit(&d, 5, memory_order_relaxed); atomic_fetch_or_explicit(c + 2, 6u, memory_order_relaxed);
return float4(a, atomic_load_explicit(&c[1], memory_order_relaxed), atomic_load_explicit(&d, memory_order_relaxed), atomic_fetch_and_explicit(&c[2], 15u, memory_order_relaxed));
//! gives 0 7 5 6
//! case AtomicsInStructs
struct S { float a; atomic_uint n; atomic<int> m; half h; };
//! parameters , device S& s [[buffer(4)]]
//! body
atomic_exchange_explicit(&s.n, 4u, memory_order_relaxed); atomic_fetch_min_explicit(&s.m, -3, memory_order_relaxed); uint e = 4; bool same = atomic_compare_exchange_weak_explicit(&s.n, &e, 4u, memory_order_relaxed, memory_order_relaxed);
return float4(atomic_load_explicit(&s.n, memory_order_relaxed), atomic_load_explicit(&s.m, memory_order_relaxed), same, e);
//! gives 4 -3 1 4
//! case AtomicsAreNoNumbers
//! parameters , device atomic_uint& c [[buffer(4)]]
//! body
return float4(c + 1);
//! refused '+' does not apply to
