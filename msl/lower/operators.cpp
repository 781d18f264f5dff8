#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

Lowerer::Value Lowerer::unaryMinus(const Type* type, Value a) {
    const ir::TypeId wanted = irType(type);
    if (type->isMatrix()) {
        std::vector<Value> columns;
        for (uint32_t i = 0; i < type->count; ++i) {
            columns.push_back(
                builder_.unary(Op::fNegate, irType(type->element), builder_.extract(a, i)));
        }
        return builder_.construct(wanted, columns);
    }
    return builder_.unary(type->scalar()->isFloating() ? Op::fNegate : Op::sNegate, wanted, a);
}

Lowerer::Value Lowerer::matrixBinary(TokenKind op, const Type* typeA, const Type* typeB, Value a,
                                     Value b) {
    if (op == TokenKind::star) {
        if (typeA->isMatrix() && typeB->isMatrix()) {
            return builder_.emit(Op::matrixTimesMatrix,
                                 builder_.matrix(typeB->count, typeA->element->count), {a, b});
        }
        if (typeA->isMatrix() && typeB->isVector()) {
            return builder_.emit(Op::matrixTimesVector, irType(typeA->element), {a, b});
        }
        if (typeA->isVector()) {
            return builder_.emit(Op::vectorTimesMatrix, ir::vectorOf(ir::kFloat, typeB->count),
                                 {a, b});
        }
        return typeA->isMatrix() ? builder_.emit(Op::matrixTimesScalar, irType(typeA), {a, b})
                                 : builder_.emit(Op::matrixTimesScalar, irType(typeB), {b, a});
    }
    if (op == TokenKind::slash) {
        const Value inverse =
            builder_.binary(Op::fDiv, ir::kFloat, builder_.floatConstant(1.0F), b);
        return builder_.emit(Op::matrixTimesScalar, irType(typeA), {a, inverse});
    }
    const ir::TypeId column = irType(typeA->element);
    std::vector<Value> columns;
    Value equal = builder_.boolConstant(true);
    for (uint32_t i = 0; i < typeA->count; ++i) {
        const Value left = builder_.extract(a, i);
        const Value right = builder_.extract(b, i);
        if (op == TokenKind::plus || op == TokenKind::minus) {
            columns.push_back(
                builder_.binary(op == TokenKind::plus ? Op::fAdd : Op::fSub, column, left, right));
            continue;
        }
        const Value same = builder_.binary(
            Op::fEqual, ir::vectorOf(ir::kBool, typeA->element->count), left, right);
        equal = builder_.binary(Op::logicalAnd, ir::kBool, equal,
                                builder_.unary(Op::all, ir::kBool, same));
    }
    if (op == TokenKind::equalEqual) {
        return equal;
    }
    if (op == TokenKind::exclamationEqual) {
        return builder_.unary(Op::logicalNot, ir::kBool, equal);
    }
    return builder_.construct(irType(typeA), columns);
}

// Operands are of one type, but for matrices.
Lowerer::Value Lowerer::binary(TokenKind op, const Type* typeA, const Type* typeB, Value a,
                               Value b) {
    if (typeA->isMatrix() || typeB->isMatrix()) {
        return matrixBinary(op, typeA, typeB, a, b);
    }
    const Type* type = unpacked(typeA);
    const Type* scalar = type->scalar();
    const bool isFloat = scalar->isFloating();
    const bool isSigned = scalar->isSigned();
    const bool isBool = scalar->isBool();
    const ir::TypeId wanted = irType(type);
    const ir::TypeId truth = ir::vectorOf(ir::kBool, type->components());
    const auto pick = [&](Op whenFloat, Op whenSigned, Op whenUnsigned) {
        return isFloat ? whenFloat : isSigned ? whenSigned : whenUnsigned;
    };
    switch (op) {
    case TokenKind::plus:
        return builder_.binary(isFloat ? Op::fAdd : Op::iAdd, wanted, a, b);
    case TokenKind::minus:
        return builder_.binary(isFloat ? Op::fSub : Op::iSub, wanted, a, b);
    case TokenKind::star:
        return builder_.binary(isFloat ? Op::fMul : Op::iMul, wanted, a, b);
    case TokenKind::slash:
        return builder_.binary(pick(Op::fDiv, Op::sDiv, Op::uDiv), wanted, a, b);
    case TokenKind::percent:
        return builder_.binary(pick(Op::fRem, Op::sRem, Op::uMod), wanted, a, b);
    case TokenKind::ampersand:
        return builder_.binary(isBool ? Op::logicalAnd : Op::bitAnd, wanted, a, b);
    case TokenKind::pipe:
        return builder_.binary(isBool ? Op::logicalOr : Op::bitOr, wanted, a, b);
    case TokenKind::caret:
        return builder_.binary(isBool ? Op::logicalNotEqual : Op::bitXor, wanted, a, b);
    case TokenKind::shiftLeft:
    case TokenKind::shiftRight: {
        // The language takes the shift modulo the width.
        const uint64_t width = scalar->size == 8 ? 63 : 31;
        const Value mask =
            builder_.splat(wanted, builder_.constant(builder_.componentType(wanted), width));
        const Value by = builder_.binary(Op::bitAnd, wanted, b, mask);
        const Op operation = op == TokenKind::shiftLeft ? Op::shiftLeft
                             : isSigned                 ? Op::shiftRightArithmetic
                                                        : Op::shiftRightLogical;
        return builder_.binary(operation, wanted, a, by);
    }
    case TokenKind::equalEqual:
        return builder_.binary(isFloat  ? Op::fEqual
                               : isBool ? Op::logicalEqual
                                        : Op::iEqual,
                               truth, a, b);
    case TokenKind::exclamationEqual:
        return builder_.binary(isFloat  ? Op::fNotEqual
                               : isBool ? Op::logicalNotEqual
                                        : Op::iNotEqual,
                               truth, a, b);
    case TokenKind::less:
        return builder_.binary(pick(Op::fLess, Op::sLess, Op::uLess), truth, a, b);
    case TokenKind::greater:
        return builder_.binary(pick(Op::fGreater, Op::sGreater, Op::uGreater), truth, a, b);
    case TokenKind::lessEqual:
        return builder_.binary(pick(Op::fLessEqual, Op::sLessEqual, Op::uLessEqual), truth, a, b);
    case TokenKind::greaterEqual:
        return builder_.binary(pick(Op::fGreaterEqual, Op::sGreaterEqual, Op::uGreaterEqual), truth,
                               a, b);
    default:
        return builder_.undefined(wanted);
    }
}

// ++ and --.
Lowerer::Value Lowerer::step(const tree::Expr* expr) {
    const Place target = place(expr->a);
    const Type* type = unpacked(expr->a->type);
    const Value before = load(target);
    const Value one = type->scalar()->isFloating() ? builder_.floatConstant(1.0F)
                                                   : builder_.constant(irType(type->scalar()), 1);
    const TokenKind op = expr->op == TokenKind::plusPlus ? TokenKind::plus : TokenKind::minus;
    const Value after =
        wrapSmall(binary(op, type, type, before, builder_.splat(irType(type), one)), type);
    store(target, after);
    return expr->after ? before : after;
}

} // namespace msl
