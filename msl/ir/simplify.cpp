// Folding of constants and simplification of instructions.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include <spirv/unified1/GLSL.std.450.h>

#include "msl/ir/builder.h"

namespace msl::ir {

Value Builder::foldUnary(Op op, TypeId wanted, Value a) {
    if (!isConstant(a) || module_.types[typeOf(a)].kind > TypeKind::vector) {
        return kNoValue;
    }
    if (op == Op::any || op == Op::all) {
        bool result = op == Op::all;
        for (uint32_t i = 0; i < componentCount(typeOf(a)); ++i) {
            const bool part = scalarBits(constantPart(a, i)).value_or(0) != 0;
            result = op == Op::all ? result && part : result || part;
        }
        return boolConstant(result);
    }
    const uint32_t count = componentCount(wanted);
    if (count != componentCount(typeOf(a))) {
        return kNoValue;
    }
    const TypeId from = componentType(typeOf(a));
    const TypeId to = componentType(wanted);
    if (op == Op::bitcast && (from == kLong) != (to == kLong)) {
        return kNoValue;
    }
    if (to > kLong) {
        return kNoValue;
    }
    std::array<Value, 4> parts{};
    for (uint32_t i = 0; i < count; ++i) {
        const auto bits = scalarBits(constantPart(a, i));
        if (!bits) {
            return kNoValue;
        }
        const auto folded = op == Op::bitcast ? bits : foldScalar(op, from, to, *bits);
        if (!folded) {
            return kNoValue;
        }
        parts[i] = constant(to, *folded);
    }
    return count == 1 ? parts[0] : composite(wanted, std::span(parts).first(count));
}

Value Builder::foldBinary(Op op, TypeId wanted, Value a, Value b) {
    const TypeId type = typeOf(a);
    if (!isConstant(a) || !isConstant(b) || type != typeOf(b) ||
        module_.types[type].kind > TypeKind::vector ||
        componentCount(wanted) != componentCount(type)) {
        return kNoValue;
    }
    const uint32_t count = componentCount(type);
    std::array<Value, 4> parts{};
    for (uint32_t i = 0; i < count; ++i) {
        const auto left = scalarBits(constantPart(a, i));
        const auto right = scalarBits(constantPart(b, i));
        if (!left || !right) {
            return kNoValue;
        }
        const auto folded = foldScalar(op, componentType(type), *left, *right);
        if (!folded) {
            return kNoValue;
        }
        parts[i] = constant(componentType(wanted), *folded);
    }
    return count == 1 ? parts[0] : composite(wanted, std::span(parts).first(count));
}

// Identities, with the freedom that Metal's default of fast mathematics gives for floats.
Value Builder::simplifyBinary(Op op, TypeId wanted, Value a, Value b) {
    constexpr uint64_t kOne = 0x3F800000U;
    constexpr uint64_t kMinusOne = 0xBF800000U;
    constexpr uint64_t kMinusZero = 0x80000000U;
    const auto zeroLike = [&](Value value) {
        return isSplatOf(value, 0) || isSplatOf(value, kMinusZero);
    };
    switch (op) {
    case Op::fAdd:
        if (zeroLike(a)) {
            return b;
        }
        if (zeroLike(b)) {
            return a;
        }
        break;
    case Op::fSub:
        if (zeroLike(b)) {
            return a;
        }
        if (zeroLike(a)) {
            return unary(Op::fNegate, wanted, b);
        }
        break;
    case Op::fMul:
        if (isSplatOf(a, kOne)) {
            return b;
        }
        if (isSplatOf(b, kOne)) {
            return a;
        }
        if (isSplatOf(a, 0) || isSplatOf(b, 0)) {
            return zero(wanted);
        }
        if (isSplatOf(a, kMinusOne)) {
            return unary(Op::fNegate, wanted, b);
        }
        if (isSplatOf(b, kMinusOne)) {
            return unary(Op::fNegate, wanted, a);
        }
        break;
    case Op::fDiv: {
        if (isSplatOf(b, kOne)) {
            return a;
        }
        if (!isConstant(b)) {
            break;
        }
        // Dividing by a power of two is multiplying by its inverse, exactly.
        const auto divisor = floatValue(constantPart(b, 0));
        if (divisor && isSplatOf(b, std::bit_cast<uint32_t>(*divisor))) {
            int exponent = 0;
            if (std::abs(std::frexp(*divisor, &exponent)) == 0.5F && std::abs(exponent) < 100) {
                return binary(Op::fMul, wanted, a, splat(wanted, floatConstant(1.0F / *divisor)));
            }
        }
        break;
    }
    case Op::iAdd:
    case Op::bitOr:
    case Op::bitXor:
        if (isSplatOf(a, 0)) {
            return b;
        }
        if (isSplatOf(b, 0)) {
            return a;
        }
        break;
    case Op::iSub:
    case Op::shiftLeft:
    case Op::shiftRightLogical:
    case Op::shiftRightArithmetic:
        if (isSplatOf(b, 0)) {
            return a;
        }
        break;
    case Op::iMul:
        if (isSplatOf(a, 1)) {
            return b;
        }
        if (isSplatOf(b, 1)) {
            return a;
        }
        if (isSplatOf(a, 0) || isSplatOf(b, 0)) {
            return zero(wanted);
        }
        break;
    case Op::sDiv:
    case Op::uDiv:
        if (isSplatOf(b, 1)) {
            return a;
        }
        break;
    case Op::bitAnd:
        if (isSplatOf(a, 0) || isSplatOf(b, 0)) {
            return zero(wanted);
        }
        break;
    case Op::logicalAnd:
        if (isSplatOf(a, 1) || isSplatOf(b, 0)) {
            return b;
        }
        if (isSplatOf(b, 1) || isSplatOf(a, 0)) {
            return a;
        }
        break;
    case Op::logicalOr:
        if (isSplatOf(a, 0) || isSplatOf(b, 1)) {
            return b;
        }
        if (isSplatOf(b, 0) || isSplatOf(a, 1)) {
            return a;
        }
        break;
    case Op::vectorTimesScalar:
        if (isSplatOf(b, kOne)) {
            return a;
        }
        if (isSplatOf(b, 0) || isSplatOf(a, 0)) {
            return zero(wanted);
        }
        if (isConstant(a) && isConstant(b)) {
            return binary(Op::fMul, wanted, a, splat(wanted, b));
        }
        break;
    default:
        break;
    }
    return kNoValue;
}

// Folds the functions whose results every device must give alike.
Value Builder::foldExtended(uint32_t number, TypeId wanted, std::span<const Value> operands) {
    if (!std::all_of(operands.begin(), operands.end(),
                     [&](Value operand) { return isConstant(operand); }) ||
        componentType(wanted) != kFloat || module_.types[wanted].kind > TypeKind::vector) {
        return kNoValue;
    }
    const uint32_t count = componentCount(wanted);
    std::array<Value, 4> parts{};
    for (uint32_t i = 0; i < count; ++i) {
        std::array<float, 3> x{};
        for (size_t j = 0; j < operands.size() && j < 3; ++j) {
            const auto value = floatValue(constantPart(operands[j], i));
            if (!value || componentCount(typeOf(operands[j])) != count) {
                return kNoValue;
            }
            x[j] = *value;
        }
        float result = 0;
        switch (number) {
        case GLSLstd450FAbs:
            result = std::fabs(x[0]);
            break;
        case GLSLstd450Floor:
            result = std::floor(x[0]);
            break;
        case GLSLstd450Ceil:
            result = std::ceil(x[0]);
            break;
        case GLSLstd450Trunc:
            result = std::trunc(x[0]);
            break;
        case GLSLstd450Fract:
            result = x[0] - std::floor(x[0]);
            break;
        case GLSLstd450NMin:
            result = std::fmin(x[0], x[1]);
            break;
        case GLSLstd450NMax:
            result = std::fmax(x[0], x[1]);
            break;
        case GLSLstd450NClamp:
            result = std::fmin(std::fmax(x[0], x[1]), x[2]);
            break;
        case GLSLstd450Sqrt:
            if (x[0] < 0) {
                return kNoValue;
            }
            result = std::sqrt(x[0]);
            break;
        case GLSLstd450Sin:
            result = std::sin(x[0]);
            break;
        case GLSLstd450Cos:
            result = std::cos(x[0]);
            break;
        case GLSLstd450Tan:
            result = std::tan(x[0]);
            break;
        case GLSLstd450Exp:
            result = std::exp(x[0]);
            break;
        case GLSLstd450Exp2:
            result = std::exp2(x[0]);
            break;
        case GLSLstd450Log:
        case GLSLstd450Log2:
            if (x[0] <= 0) {
                return kNoValue;
            }
            result = number == GLSLstd450Log ? std::log(x[0]) : std::log2(x[0]);
            break;
        case GLSLstd450Pow:
            if (x[0] <= 0) {
                return kNoValue;
            }
            result = std::pow(x[0], x[1]);
            break;
        default:
            return kNoValue;
        }
        parts[i] = floatConstant(result);
    }
    return count == 1 ? parts[0] : composite(wanted, std::span(parts).first(count));
}

} // namespace msl::ir
