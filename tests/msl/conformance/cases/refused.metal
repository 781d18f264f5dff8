//! case BrainFloats
//! body
bfloat x = 1; return 0;
//! refused 'bfloat' is not supported; use 'half' or 'float'
//! case BallotsOfSimdGroups
//! body
return float4(simd_ballot(v.one > 0));
//! refused this function across a SIMD group is not supported
//! case GroupsOfVertexFunctions
vertex float4 v_main(uint vid [[vertex_id]]) { return float4(simd_sum(vid)); }
fragment float4 f_main() { return 0; }
//! refused functions across a SIMD group are for fragment functions
//! case RasterOrderGroups
fragment float4 f_main(float4 p [[position]], float x [[raster_order_group(0)]]) { return x; }
//! refused raster order groups are not supported
//! case Barycentrics
fragment float4 f_main(float3 b [[barycentric_coord]]) { return b.xxyz; }
//! refused barycentric coordinates are not supported
//! case RayTracing
using namespace metal::raytracing;
fragment float4 f_main(instance_acceleration_structure s [[buffer(0)]]) { return 0; }
//! refused ray tracing is not supported
//! case Tessellation
struct P { float4 p [[attribute(0)]]; };
[[patch(quad, 4)]] vertex float4 v_main(patch_control_point<P> in [[stage_in]]) { return 0; }
//! refused tessellation is not supported
//! case GotoIsNone
//! body
goto end; end: return 0;
//! refused the language has no 'goto'
//! case FixedLengthsOnly
//! body
int n = v.i3; float a[n]; return 0;
//! refused the length of an array must be an integer known when compiling
//! case UnwritableConstants
//! body
v.one = 2; return 0;
//! refused 'v' is constant and cannot be written
//! case NarrowingInsideVectors
//! body
float2 a = v.v1234; return a.xyxy;
//! refused the value has the type 'float4', which does not convert to 'float2'
//! case TooManyComponents
//! body
return float4(v.v1234, 1);
//! refused 'float4' needs 4 components, not 5
//! case MissingReturn
float f(float x) { x += 1; }
//! body
return f(v.one);
//! refused the function 'f' returns 'float' but has no 'return'
//! case WrongAddressSpace
void f(thread float& x) { x = 1; }
//! body
f(v.one); return 0;
//! refused no function 'f' takes the arguments (float)
//! case AmbiguousOverloads
float f(int a, float b) { return 1; } float f(float a, int b) { return 2; }
//! body
return f(1, 1);
//! refused the call of 'f' with the arguments (int, int) is ambiguous
//! case UnknownAttributesOfInputs
fragment float4 f_main(float x [[thread_index_in_quadgroup]]) { return x; }
//! refused '[[thread_index_in_quadgroup]]' is not supported on a parameter here
//! case OverlongSwizzles
//! body
return v.v12.xyz.xxxx;
//! refused 'float2' has no component 'xyz'
//! case ErrorDirectives
#ifndef NOTHING
#error "write the shader"
#endif
//! body
return 0;
//! refused #error "write the shader"
//! case StaticAssertions
static_assert(sizeof(float3) == 12, "no");
//! body
return 0;
//! refused the assertion does not hold
//! case DivisionKeepsTypes
//! body
int2 a = int2(1) + 0.5; return 0;
//! refused '+' of 'int2' and 'float' would lose the fraction
//! case PointersToNothing
//! body
thread float* p; return *p;
//! refused this pointer's target is not known when compiling
