#include <metal_stdlib>
using namespace metal;
#ifndef SHARED_TYPES_H
#define SHARED_TYPES_H
#ifdef __METAL_VERSION__
#define NS_ENUM(_type, _name) enum _name : _type _name; enum _name : _type
#define NSInteger int
#else
#import <Foundation/Foundation.h>
#endif
#include <simd/simd.h>
typedef NS_ENUM(NSInteger, BufferIndex) { BufferIndexVertices = 0, BufferIndexUniforms = 1 };
typedef struct { vector_float3 position; matrix_float3x3 turn; float scale; } Shared;
#endif
struct Values { float zero; float one; float two; float half_; int i3; uint u5; float2 v12; float4 v1234; };
fragment float4 f_main(float4 fragCoord [[position]], constant Values& v [[buffer(0)]] , constant Shared& s [[buffer(BufferIndexUniforms)]]) {
return float4(s.position.z, s.turn[1].y, s.scale, BufferIndexUniforms);

}
