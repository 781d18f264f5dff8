// The standard library's functions, described by one table: name, signature, and the operation that
// each becomes.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "msl/ir/ir.h"
#include "msl/lexer/name.h"

namespace msl {

// Which types the letter T of a signature may stand for.
enum class TypeClass : uint8_t {
    floating,
    integer,
    arithmetic,
    boolean,
    anyScalarOrVector,
    floatVector,
    matrix,
    squareMatrix,
    none
};

enum class Lowering : uint8_t {
    extended,  // an instruction of GLSL.std.450, by the operand's kind
    operation, // an operation of the intermediate form
    special,
};

// Functions that take more than one instruction.
enum class Special : uint8_t {
    none,
    saturate,
    round,
    exp10,
    log10,
    sinpi,
    cospi,
    tanpi,
    fmod,
    absFloat,
    powr,
    rsqrt,
    sincos,
    modf,
    frexp,
    ldexp,
    ilogb,
    logb,
    isfinite,
    isnormal,
    signbit,
    isunordered,
    isordered,
    fdim,
    lengthSquared,
    distanceSquared,
    maxMagnitude,
    minMagnitude,
    min3,
    max3,
    median3,
    clz,
    ctz,
    popcount,
    reverseBits,
    extractBits,
    insertBits,
    rotate,
    absdiff,
    hadd,
    rhadd,
    mulhi,
    madhi,
    mad,
    addsat,
    subsat,
    selectParts,
    mix,
    clamp,
    min,
    max,
    abs,
    sign,
    discard,
    any,
    all,
    unpackUnorm4,
    unpackSnorm4,
    unpackUnorm2,
    unpackSnorm2,
    packUnorm4,
    packSnorm4,
    packUnorm2,
    packSnorm2,
    packHalf2,
    unpackHalf2,
    barrier,
    isnan,
    isinf,
    copysign,
    nextafter,
    divide,
    rint,
    fract,
    smoothstep,
    determinant,
    transpose,
    // Members of textures; the object is the first argument.
    sample,
    sampleCompare,
    gather,
    gatherCompare,
    read,
    write,
    width,
    height,
    depth,
    arraySize,
    mipLevels,
    samples,
    atomic, // the call's index is the ir::Op
    clampedLod,
    unclampedLod,
    fence,
    // Across a SIMD group: the codes are SPIR-V's instructions.
    groupReduce,
    groupInclusive,
    groupExclusive,
    groupPlain,
    quadReduce,  // the codes are ir::Op; without them the smaller, or (signedCode) the greater
    quadShuffle, // by the thread's number
    quadMove,    // floatCode is the ir::Op that makes the number from the thread's own
};

// A signature is the result's letter followed by the parameters':
//   T the generic type; S its scalar; B, I, U, F a bool, int, uint or float of its shape;
//   R a reference to T, J to I (both written); v nothing; f, u, b one float, uint, bool;
//   M the generic matrix; x its transposed shape; D its scalar
//   2, 4 a float vector of that size; p, q a half vector of 2 and 4
struct LibraryFunction {
    std::string_view name;
    std::string_view signature;
    TypeClass typeClass = TypeClass::none;
    Lowering lowering = Lowering::special;
    uint16_t floatCode = 0;  // GLSL.std.450 number or ir::Op, by `lowering`
    uint16_t signedCode = 0; // 0 where it is the same
    uint16_t unsignedCode = 0;
    Special special = Special::none;
};

// The overloads of a name, found once per name and compilation.
std::span<const LibraryFunction> findLibraryFunctions(Name name);
const LibraryFunction* findTextureMember(std::string_view name);
std::vector<std::string_view> textureMemberNames();
// Every name in the table, for suggestions.
std::span<const LibraryFunction> allLibraryFunctions();

} // namespace msl
