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

} // namespace

std::string_view unsupportedReason(std::string_view name) {
    for (const auto& refusal : kRefusals) {
        if (name.starts_with(refusal.prefix)) {
            return refusal.reason;
        }
    }
    return {};
}

} // namespace msl
