#include <metal_stdlib>
using namespace metal;
#include <metal_math>
#include <metal_geometric>
#include <metal_texture>
#include <metal_matrix>
#include <metal_common>
#include <metal_graphics>
#include <metal_integer>
#include <metal_relational>
#include <metal_atomic>
#include <metal_pack>
#include <metal_types>
#import <simd/simd.h>
#pragma clang diagnostic ignored "-Wunused"
#pragma once
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]]) {
return float4(metal::sqrt(v.two * 2));

}
