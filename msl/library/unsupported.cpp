#include "msl/library/unsupported.h"

namespace msl {
namespace {

struct Refusal {
    std::string_view prefix;
    std::string_view reason;
};

constexpr Refusal kRefusals[] = {
    {"bfloat", "'bfloat' is not supported; use 'half' or 'float'"},
    {"simd_", "this function across a SIMD group is not supported; sums, extremes, prefix sums, "
              "shuffles, broadcasts, 'simd_all' and 'simd_any' are"},
    {"quad_", "this function across a quad is not supported; sums, extremes, shuffles, broadcasts, "
              "'quad_all' and 'quad_any' are"},
    {"simdgroup_", "SIMD-group matrices and barriers are for kernels, which are not compiled"},
    {"threadgroup_", "threadgroup functions are for kernels, which are not compiled"},
    {"imageblock", "imageblocks are not supported; bind the picture as a texture"},
    {"patch_control_point", "tessellation is not supported; draw the triangles themselves"},
    {"object_data", "mesh and object functions are not supported; use a vertex function"},
    {"mesh_grid_properties", "mesh and object functions are not supported; use a vertex function"},
    {"intersector", "ray tracing is not supported"},
    {"intersection_", "ray tracing is not supported"},
    {"acceleration_structure", "ray tracing is not supported"},
    {"primitive_acceleration_structure", "ray tracing is not supported"},
    {"instance_acceleration_structure", "ray tracing is not supported"},
    {"raytracing", "ray tracing is not supported"},
    {"visible_function_table", "visible functions are not supported; call the function itself"},
    {"command_buffer", "indirect command buffers are not supported"},
    {"render_command", "indirect command buffers are not supported"},
    {"compute_command", "indirect command buffers are not supported"},
    {"interpolant", "interpolation on demand is not supported; interpolate in the stage input"},
    {"raster_order_group", "raster order groups are not supported; no order holds between "
                           "fragments of one place"},
    {"barycentric_coord", "barycentric coordinates are not supported; pass them from the vertex "
                          "function"},
    {"thread_position_in_grid", "positions in a grid are for kernels, which are not compiled"},
    {"amplification_", "vertex amplification is not supported"},
};

struct ForeignWord {
    std::string_view there;
    std::string_view here;
};

// Of GLSL and HLSL.
constexpr ForeignWord kForeignWords[] = {
    {"vec2", "float2"},
    {"vec3", "float3"},
    {"vec4", "float4"},
    {"ivec2", "int2"},
    {"ivec3", "int3"},
    {"ivec4", "int4"},
    {"uvec2", "uint2"},
    {"uvec3", "uint3"},
    {"uvec4", "uint4"},
    {"bvec2", "bool2"},
    {"bvec3", "bool3"},
    {"bvec4", "bool4"},
    {"mat2", "float2x2"},
    {"mat3", "float3x3"},
    {"mat4", "float4x4"},
    {"lerp", "mix"},
    {"frac", "fract"},
    {"ddx", "dfdx"},
    {"ddy", "dfdy"},
    {"dFdx", "dfdx"},
    {"dFdy", "dfdy"},
    {"inversesqrt", "rsqrt"},
    {"clip", "discard_fragment"},
    {"sampler2D", "texture2d<float>"},
    {"samplerCube", "texturecube<float>"},
    {"Texture2D", "texture2d<float>"},
    {"texture", "sample"},
    {"texture2D", "sample"},
    {"tex2D", "sample"},
    {"textureLod", "sample"},
    {"texelFetch", "read"},
    {"imageStore", "write"},
    {"gl_FragCoord", "[[position]]"},
    {"gl_VertexID", "[[vertex_id]]"},
    {"gl_InstanceID", "[[instance_id]]"},
    {"countbits", "popcount"},
    {"asfloat", "as_type<float>"},
    {"asuint", "as_type<uint>"},
    {"asint", "as_type<int>"},
    {"floatBitsToUint", "as_type<uint>"},
    {"uintBitsToFloat", "as_type<float>"},
};

} // namespace

std::string_view nameHere(std::string_view name) {
    for (const auto& word : kForeignWords) {
        if (word.there == name) {
            return word.here;
        }
    }
    return {};
}

std::string_view unsupportedReason(std::string_view name) {
    for (const auto& refusal : kRefusals) {
        if (name.starts_with(refusal.prefix)) {
            return refusal.reason;
        }
    }
    return {};
}

} // namespace msl
