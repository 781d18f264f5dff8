#include "msl/ir/ir.h"

#include <algorithm>
#include <array>

#include <spirv/unified1/spirv.hpp>

namespace msl::ir {
namespace {

constexpr OpInfo row(std::string_view name, spv::Op op, Literals literals = Literals::none,
                     bool sideEffect = false, bool hasResult = true) {
    return {name, static_cast<uint16_t>(op), literals, sideEffect, hasResult};
}

// Changes memory and gives what stood there before.
constexpr OpInfo atomic(std::string_view name, spv::Op op) {
    return row(name, op, Literals::none, true);
}

// In the order of Op.
constexpr std::array<OpInfo, static_cast<size_t>(Op::count)> kOps{
    row("none", spv::OpNop),
    row("constant", spv::OpConstant),
    row("composite", spv::OpConstantComposite),
    row("undefined", spv::OpUndef),
    row("specialised", spv::OpSpecConstant),
    row("variable", spv::OpVariable),
    row("phi", spv::OpPhi),
    row("fadd", spv::OpFAdd),
    row("fsub", spv::OpFSub),
    row("fmul", spv::OpFMul),
    row("fdiv", spv::OpFDiv),
    row("frem", spv::OpFRem),
    row("fneg", spv::OpFNegate),
    row("iadd", spv::OpIAdd),
    row("isub", spv::OpISub),
    row("imul", spv::OpIMul),
    row("sdiv", spv::OpSDiv),
    row("udiv", spv::OpUDiv),
    row("srem", spv::OpSRem),
    row("umod", spv::OpUMod),
    row("sneg", spv::OpSNegate),
    row("shl", spv::OpShiftLeftLogical),
    row("lshr", spv::OpShiftRightLogical),
    row("ashr", spv::OpShiftRightArithmetic),
    row("and", spv::OpBitwiseAnd),
    row("or", spv::OpBitwiseOr),
    row("xor", spv::OpBitwiseXor),
    row("not", spv::OpNot),
    row("vector_times_scalar", spv::OpVectorTimesScalar),
    row("matrix_times_scalar", spv::OpMatrixTimesScalar),
    row("vector_times_matrix", spv::OpVectorTimesMatrix),
    row("matrix_times_vector", spv::OpMatrixTimesVector),
    row("matrix_times_matrix", spv::OpMatrixTimesMatrix),
    row("outer_product", spv::OpOuterProduct),
    row("dot", spv::OpDot),
    row("transpose", spv::OpTranspose),
    row("feq", spv::OpFOrdEqual),
    row("fne", spv::OpFUnordNotEqual),
    row("flt", spv::OpFOrdLessThan),
    row("fgt", spv::OpFOrdGreaterThan),
    row("fle", spv::OpFOrdLessThanEqual),
    row("fge", spv::OpFOrdGreaterThanEqual),
    row("ieq", spv::OpIEqual),
    row("ine", spv::OpINotEqual),
    row("slt", spv::OpSLessThan),
    row("sgt", spv::OpSGreaterThan),
    row("sle", spv::OpSLessThanEqual),
    row("sge", spv::OpSGreaterThanEqual),
    row("ult", spv::OpULessThan),
    row("ugt", spv::OpUGreaterThan),
    row("ule", spv::OpULessThanEqual),
    row("uge", spv::OpUGreaterThanEqual),
    row("leq", spv::OpLogicalEqual),
    row("lne", spv::OpLogicalNotEqual),
    row("land", spv::OpLogicalAnd),
    row("lor", spv::OpLogicalOr),
    row("lnot", spv::OpLogicalNot),
    row("any", spv::OpAny),
    row("all", spv::OpAll),
    row("isnan", spv::OpIsNan),
    row("isinf", spv::OpIsInf),
    row("select", spv::OpSelect),
    row("ftos", spv::OpConvertFToS),
    row("ftou", spv::OpConvertFToU),
    row("stof", spv::OpConvertSToF),
    row("utof", spv::OpConvertUToF),
    row("swiden", spv::OpSConvert),
    row("uwiden", spv::OpUConvert),
    row("bitcast", spv::OpBitcast),
    row("construct", spv::OpCompositeConstruct),
    row("extract", spv::OpCompositeExtract, Literals::allButFirst),
    row("insert", spv::OpCompositeInsert, Literals::allButTwo),
    row("shuffle", spv::OpVectorShuffle, Literals::allButTwo),
    row("extract_dynamic", spv::OpVectorExtractDynamic),
    row("insert_dynamic", spv::OpVectorInsertDynamic),
    row("access", spv::OpAccessChain),
    row("load", spv::OpLoad),
    row("store", spv::OpStore, Literals::none, true, false),
    row("bit_count", spv::OpBitCount),
    row("bit_reverse", spv::OpBitReverse),
    row("bit_insert", spv::OpBitFieldInsert),
    row("bit_sextract", spv::OpBitFieldSExtract),
    row("bit_uextract", spv::OpBitFieldUExtract),
    row("dpdx", spv::OpDPdx),
    row("dpdy", spv::OpDPdy),
    row("fwidth", spv::OpFwidth),
    row("extended", spv::OpExtInst),
    row("sampled_image", spv::OpSampledImage),
    row("sample_implicit", spv::OpImageSampleImplicitLod),
    row("sample_explicit", spv::OpImageSampleExplicitLod),
    row("sample_dref_implicit", spv::OpImageSampleDrefImplicitLod),
    row("sample_dref_explicit", spv::OpImageSampleDrefExplicitLod),
    row("fetch", spv::OpImageFetch),
    row("gather", spv::OpImageGather),
    row("dref_gather", spv::OpImageDrefGather),
    row("query_size", spv::OpImageQuerySizeLod),
    row("query_levels", spv::OpImageQueryLevels),
    row("image_write", spv::OpImageWrite, Literals::none, true, false),
    row("image_read", spv::OpImageRead),
    row("query_size_only", spv::OpImageQuerySize),
    row("query_samples", spv::OpImageQuerySamples),
    row("query_lod", spv::OpImageQueryLod),
    atomic("atomic_load", spv::OpAtomicLoad),
    row("atomic_store", spv::OpAtomicStore, Literals::none, true, false),
    atomic("atomic_exchange", spv::OpAtomicExchange),
    atomic("atomic_compare_exchange", spv::OpAtomicCompareExchange),
    atomic("atomic_iadd", spv::OpAtomicIAdd),
    atomic("atomic_isub", spv::OpAtomicISub),
    atomic("atomic_smin", spv::OpAtomicSMin),
    atomic("atomic_umin", spv::OpAtomicUMin),
    atomic("atomic_smax", spv::OpAtomicSMax),
    atomic("atomic_umax", spv::OpAtomicUMax),
    atomic("atomic_and", spv::OpAtomicAnd),
    atomic("atomic_or", spv::OpAtomicOr),
    atomic("atomic_xor", spv::OpAtomicXor),
    row("subgroup", spv::OpNop, Literals::none, true),
};

} // namespace

const OpInfo& info(Op op) { return kOps[static_cast<size_t>(op)]; }

Module::Module() {
    types.reserve(64);
    types.push_back({.kind = TypeKind::voidType});
    types.push_back({.kind = TypeKind::boolType});
    types.push_back({.kind = TypeKind::intType, .width = 32});
    types.push_back({.kind = TypeKind::floatType, .width = 32});
    types.push_back({.kind = TypeKind::intType, .width = 64});
    for (TypeId scalar = kBool; scalar <= kLong; ++scalar) {
        for (uint32_t count = 2; count <= 4; ++count) {
            types.push_back({.kind = TypeKind::vector, .element = scalar, .count = count});
        }
    }
    instructions.resize(1); // value 0 is no value
    instructions.reserve(4096);
    operands.reserve(16384);
    replaced.reserve(4096);
}

std::span<const Value> Module::valuesOf(const Instruction& instruction) const {
    size_t count = instruction.operandCount;
    switch (info(instruction.op).literals) {
    case Literals::none:
        break;
    case Literals::allButFirst:
        count = std::min<size_t>(count, 1);
        break;
    case Literals::allButTwo:
        count = std::min<size_t>(count, 2);
        break;
    }
    return operandsOf(instruction).first(count);
}

} // namespace msl::ir
