// Functions across a SIMD group, which is Vulkan's subgroup, and across a quad, which is four
// neighbours in it (Vulkan's specification, "Quad").
#include <spirv/unified1/spirv.hpp>

#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

namespace {

constexpr uint32_t kSubgroup = spv::ScopeSubgroup;
constexpr uint32_t kQuad = 4;

} // namespace

// The instruction; `group`, where it has one, is its group operation.
Lowerer::Value Lowerer::subgroup(uint32_t instruction, ir::TypeId type,
                                 std::initializer_list<Value> operands,
                                 std::optional<uint32_t> group) {
    usesSubgroups_ = true;
    std::vector<uint32_t> all{builder_.intConstant(kSubgroup)};
    all.insert(all.end(), operands.begin(), operands.end());
    return builder_.emit(Op::subgroup, type, all, instruction | (group ? (*group + 1) << 16U : 0U));
}

// One of the stage's own numbers: where the thread stands in its group, how large the group is.
Lowerer::Value Lowerer::groupNumber(ir::BuiltIn builtIn) {
    usesSubgroups_ = true;
    const ir::Global global{
        .storage = ir::Storage::input, .builtIn = builtIn, .flat = stage_ == Stage::fragment};
    return builder_.emit(Op::load, ir::kInt, {interfaceVariable(ir::kInt, global)});
}

// What the thread of the number `index` in the quad has.
Lowerer::Value Lowerer::ofQuad(ir::TypeId type, Value held, Value index) {
    const auto broadcast = [&](uint32_t thread) {
        return subgroup(spv::OpGroupNonUniformQuadBroadcast, type,
                        {held, builder_.intConstant(thread)});
    };
    if (const auto known = builder_.scalarBits(index)) {
        return broadcast(static_cast<uint32_t>(*known) % kQuad);
    }
    Value result = broadcast(0);
    for (uint32_t i = 1; i < kQuad; ++i) {
        result = builder_.select(type, isWord(index, i), broadcast(i), result);
    }
    return result;
}

Lowerer::Value Lowerer::quadFunction(const tree::Expr* expr, const std::vector<Value>& x) {
    const ir::TypeId type = irType(expr->type);
    const auto& function = *expr->library;
    if (function.special != Special::quadReduce) {
        const Value own =
            builder_.binary(Op::bitAnd, ir::kInt, groupNumber(ir::BuiltIn::subgroupThread),
                            builder_.intConstant(kQuad - 1));
        const Value index =
            function.special == Special::quadShuffle
                ? x[1]
                : builder_.binary(static_cast<Op>(function.floatCode), ir::kInt, own, x[1]);
        return ofQuad(type, x[0], index);
    }
    const Type* scalar = expr->type->scalar();
    Value result = ir::kNoValue;
    for (uint32_t i = 0; i < kQuad; ++i) {
        const Value part = ofQuad(type, x[0], builder_.intConstant(i));
        if (i == 0) {
            result = part;
        } else if (function.floatCode == 0) {
            result = minMax(expr->type, function.signedCode != 0, result, part);
        } else {
            result = builder_.binary(
                static_cast<Op>(scalar->isFloating() ? function.floatCode : function.signedCode),
                type, result, part);
        }
    }
    return wrapSmall(result, expr->type);
}

Lowerer::Value Lowerer::groupFunction(const tree::Expr* expr, const std::vector<Value>& x) {
    const auto& function = *expr->library;
    const ir::TypeId type = irType(expr->type);
    if (stage_ != Stage::fragment) {
        error(expr->range, "functions across a SIMD group are for fragment functions");
        return builder_.undefined(type);
    }
    if (function.special == Special::quadReduce || function.special == Special::quadShuffle ||
        function.special == Special::quadMove) {
        return quadFunction(expr, x);
    }
    const Type* scalar = expr->type->scalar();
    const uint32_t code = scalar->isFloating() ? function.floatCode
                          : scalar->isSigned() ? function.signedCode
                                               : function.unsignedCode;
    switch (function.special) {
    case Special::groupReduce:
        return wrapSmall(subgroup(code, type, {x[0]}, spv::GroupOperationReduce), expr->type);
    case Special::groupInclusive:
        return wrapSmall(subgroup(code, type, {x[0]}, spv::GroupOperationInclusiveScan),
                         expr->type);
    case Special::groupExclusive:
        return wrapSmall(subgroup(code, type, {x[0]}, spv::GroupOperationExclusiveScan),
                         expr->type);
    default:
        return x.empty()       ? subgroup(function.floatCode, type, {})
               : x.size() == 1 ? subgroup(function.floatCode, type, {x[0]})
                               : subgroup(function.floatCode, type, {x[0], x[1]});
    }
}

} // namespace msl
