// The intermediate form: typed values in static single assignment, in blocks whose branches are
// structured as SPIR-V wants them. Integers carry no sign: the operation does. One module holds all
// entry points of a unit.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "msl/msl.h"

namespace msl::ir {

using TypeId = uint32_t;  // index into Module::types
using Value = uint32_t;   // index into Module::instructions; 0 is no value
using BlockId = uint32_t; // index into Module::blocks
inline constexpr Value kNoValue = 0;
inline constexpr BlockId kNoBlock = UINT32_MAX;

enum class TypeKind : uint8_t {
    voidType,
    boolType,
    intType,
    floatType,
    vector,
    matrix,
    array,
    structure,
    pointer,
    image,
    sampler,
    sampledImage
};

enum class Storage : uint8_t { none, input, output, function, privateData, buffer, resource };

enum class ImageDim : uint8_t { dim1d, dim2d, dim3d, cube, buffer };

struct TypeInfo {
    TypeKind kind = TypeKind::voidType;
    uint8_t width = 0;     // bits of an integer or float
    bool isSigned = false; // integers of the interface only; all others are unsigned
    bool isBlock = false;  // a struct that is a buffer
    bool arrayed = false;  // images
    bool depth = false;
    bool storageImage = false;
    bool multisampled = false;
    ImageDim dim = ImageDim::dim2d;
    Storage storage = Storage::none; // pointers
    TypeId element = 0;              // of vectors, matrices (the column), arrays, pointers, images
    uint32_t count = 0;              // of vectors, matrices, arrays; 0 for an array without bound
    uint32_t stride = 0;             // arrays and structs in buffers; 0 elsewhere
    uint32_t firstMember = 0;        // structs: index into Module::members
    bool operator==(const TypeInfo&) const = default;
};

struct Member {
    TypeId type = 0;
    uint32_t offset = 0;       // in buffers
    uint32_t matrixStride = 0; // in buffers, of (arrays of) matrices
};

// The types that every module has, at fixed places.
inline constexpr TypeId kVoid = 0;
inline constexpr TypeId kBool = 1;
inline constexpr TypeId kInt = 2;
inline constexpr TypeId kFloat = 3;
inline constexpr TypeId kLong = 4;
inline constexpr TypeId kFirstVector = 5; // bool2 bool3 bool4 int2 ... long4

enum class Op : uint8_t {
    none,
    constant,
    composite,
    undefined,
    specialised, // a constant whose number `extra` is
    variable,
    phi,
    // arithmetic
    fAdd,
    fSub,
    fMul,
    fDiv,
    fRem,
    fNegate,
    iAdd,
    iSub,
    iMul,
    sDiv,
    uDiv,
    sRem,
    uMod,
    sNegate,
    shiftLeft,
    shiftRightLogical,
    shiftRightArithmetic,
    bitAnd,
    bitOr,
    bitXor,
    bitNot,
    vectorTimesScalar,
    matrixTimesScalar,
    vectorTimesMatrix,
    matrixTimesVector,
    matrixTimesMatrix,
    outerProduct,
    dot,
    transpose,
    // comparison and logic
    fEqual,
    fNotEqual,
    fLess,
    fGreater,
    fLessEqual,
    fGreaterEqual,
    iEqual,
    iNotEqual,
    sLess,
    sGreater,
    sLessEqual,
    sGreaterEqual,
    uLess,
    uGreater,
    uLessEqual,
    uGreaterEqual,
    logicalEqual,
    logicalNotEqual,
    logicalAnd,
    logicalOr,
    logicalNot,
    any,
    all,
    isNan,
    isInf,
    select,
    // conversion
    floatToSigned,
    floatToUnsigned,
    signedToFloat,
    unsignedToFloat,
    signedWiden,
    unsignedWiden,
    bitcast,
    // composites
    construct,
    extract,
    insert,
    shuffle,
    extractDynamic,
    insertDynamic,
    // memory
    accessChain,
    load,
    store,
    // bits
    bitCount,
    bitReverse,
    bitFieldInsert,
    bitFieldSExtract,
    bitFieldUExtract,
    // derivatives and extended instructions
    dpdx,
    dpdy,
    fwidth,
    extended,
    // images
    sampledImage,
    sampleImplicit,
    sampleExplicit,
    sampleDrefImplicit,
    sampleDrefExplicit,
    fetch,
    gather,
    drefGather,
    querySize,
    queryLevels,
    imageWrite,
    imageRead,
    querySizeOnly, // of an image without levels
    querySamples,
    queryLod,
    // atomics
    atomicLoad,
    atomicStore,
    atomicExchange,
    atomicCompareExchange,
    atomicIAdd,
    atomicISub,
    atomicSMin,
    atomicUMin,
    atomicSMax,
    atomicUMax,
    atomicAnd,
    atomicOr,
    atomicXor,
    // Across a subgroup: the instruction of the number in the lower half of `extra`, with the group
    // operation of the number in its upper half less one.
    subgroup,
    count,
};

enum class Literals : uint8_t { none, allButFirst, allButTwo };

struct OpInfo {
    std::string_view name;
    uint16_t spirv = 0;                 // the SPIR-V opcode
    Literals literals = Literals::none; // operands that are numbers rather than values
    bool sideEffect = false;
    bool hasResult = true;
};

const OpInfo& info(Op op);

struct Instruction {
    Op op = Op::none;
    uint16_t operandCount = 0;
    TypeId type = kVoid;
    uint32_t firstOperand = 0; // index into Module::operands
    // A scalar constant's low bits, a variable's storage and resource, an extended instruction's
    // number, an image instruction's operand mask.
    uint32_t extra = 0;
    Value next = kNoValue; // in the block
};

enum class Terminator : uint8_t {
    none,
    branch,
    conditional,
    multiway,
    leave,
    unreachable,
    discard
};
enum class Merge : uint8_t { none, selection, loop };

struct Block {
    Value firstPhi = kNoValue;
    Value lastPhi = kNoValue;
    Value first = kNoValue;
    Value last = kNoValue;
    Terminator terminator = Terminator::none;
    Merge merge = Merge::none;
    BlockId mergeBlock = kNoBlock;
    BlockId continueBlock = kNoBlock;
    Value condition = kNoValue;
    BlockId target = kNoBlock;      // taken, or the default of a switch
    BlockId otherTarget = kNoBlock; // not taken
    uint32_t firstCase = 0;         // of Module::cases
    uint32_t caseCount = 0;
};

struct Case {
    uint32_t value = 0;
    BlockId target = kNoBlock;
};

enum class BuiltIn : uint8_t {
    none,
    position,
    fragCoord,
    vertexIndex,
    instanceIndex,
    baseVertex,
    baseInstance,
    frontFacing,
    pointCoord,
    pointSize,
    sampleId,
    sampleMask,
    fragDepth,
    clipDistance,
    primitiveId,
    layer,
    viewportIndex,
    subgroupThread,
    subgroupSize,
};

// What stands behind a variable of the module.
struct Global {
    Value variable = kNoValue;
    Storage storage = Storage::none;
    BuiltIn builtIn = BuiltIn::none;
    bool hasLocation = false;
    bool flat = false;
    bool noPerspective = false;
    bool centroid = false;
    bool sample = false;
    bool readOnly = false;
    uint32_t location = 0;
    uint32_t index = 0; // of a colour: which source of the blending
    uint32_t set = 0;
    uint32_t binding = 0;
    Value initializer = kNoValue;
};

enum class DepthMode : uint8_t { none, any, greater, less };

struct Function {
    std::string name;
    Stage stage = Stage::fragment;
    DepthMode depth = DepthMode::none;
    bool earlyTests = false;
    std::vector<BlockId> layout;  // blocks in order; the first one is the entry
    std::vector<Value> locals;    // variables of function storage
    std::vector<Value> interface; // the globals that it uses
};

struct Module {
    std::vector<TypeInfo> types;
    std::vector<Member> members;
    std::vector<Instruction> instructions;
    std::vector<uint32_t> operands;
    std::vector<uint32_t> highBits; // of 64-bit constants, by Instruction::firstOperand
    std::vector<Block> blocks;
    std::vector<Case> cases;
    std::vector<Global> globals;
    std::vector<Function> functions;
    std::vector<Value> constants; // in order of creation
    std::vector<Value> replaced;  // phi to the value that stands for it; 0 where it stays

    Module();
    // The value that finally stands for one, when superfluous phis are gone.
    Value resolve(Value value) const {
        while (value < replaced.size() && replaced[value] != kNoValue) {
            value = replaced[value];
        }
        return value;
    }
    std::span<const uint32_t> operandsOf(const Instruction& instruction) const {
        return {operands.data() + instruction.firstOperand, instruction.operandCount};
    }
    // The operands of an instruction other than a phi that are values; what follows are numbers.
    std::span<const Value> valuesOf(const Instruction& instruction) const;
    const TypeInfo& typeOf(Value value) const { return types[instructions[value].type]; }
};

inline TypeId vectorOf(TypeId scalar, uint32_t count) {
    return count == 1 ? scalar : kFirstVector + (scalar - kBool) * 3 + count - 2;
}

// Of every value, whether an effect, a branch or the interface needs it, directly or through
// others.
std::vector<bool> usedValues(const Module& module);

// Readable text, for tests and people.
std::string print(const Module& module);

// Finds broken rules of the form: undefined or mistyped operands, values used where they are not
// defined, blocks without end, merges out of place. An empty list means none.
std::vector<std::string> check(const Module& module);

} // namespace msl::ir
