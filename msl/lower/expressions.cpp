#include <bit>

#include "msl/lower/depth.h"
#include "msl/lower/lower.h"

namespace msl {

using ir::Op;
using tree::ExprKind;

Lowerer::Value Lowerer::constant(const Type* type, uint64_t bits) {
    const Type* scalar = type->isEnum() ? type->element : type;
    if (scalar->isFloating()) {
        return builder_.floatConstant(static_cast<float>(std::bit_cast<double>(bits)));
    }
    return builder_.constant(irType(scalar), scalar->size == 8 ? bits : bits & UINT32_MAX);
}

Lowerer::Value Lowerer::zeroOf(const Type* type) {
    if (type->leaves > kMaxTypeLeaves * 4) {
        error({}, "a value of more than " + std::to_string(kMaxTypeLeaves * 4) +
                      " parts cannot be made");
        stopped_ = true;
        return builder_.undefined(irType(type));
    }
    return builder_.zero(irType(type));
}

Lowerer::Value Lowerer::value(const tree::Expr* expr) {
    if (!held_.empty()) {
        if (const auto known = held_.find(expr); known != held_.end()) {
            return known->second;
        }
    }
    const Depth depth(*this);
    if (!spend(expr->range)) {
        return expr->type->isVoid() || expr->type->holdsResources()
                   ? ir::kNoValue
                   : builder_.undefined(irType(expr->type));
    }
    if (expr->type->holdsResources() && expr->kind != ExprKind::assign) {
        // Evaluated for its effects only.
        if (expr->kind == ExprKind::call) {
            call(expr);
        } else if (expr->kind == ExprKind::pointerStep) {
            pointerStep(expr);
        } else if (expr->kind == ExprKind::comma) {
            value(expr->a);
            value(expr->b);
        }
        return ir::kNoValue;
    }
    return valueAtDepth(expr);
}

Lowerer::Value Lowerer::valueAtDepth(const tree::Expr* expr) {
    switch (expr->kind) {
    case ExprKind::constant:
        return constant(expr->type, expr->bits);
    case ExprKind::zero:
        return zeroOf(expr->type);
    case ExprKind::variable:
    case ExprKind::field:
    case ExprKind::swizzle:
    case ExprKind::index:
    case ExprKind::deref:
        return load(place(expr));
    case ExprKind::addressOf:
        error(expr->range, "a pointer is no value here");
        return ir::kNoValue;
    case ExprKind::unary: {
        const Value a = value(expr->a);
        switch (expr->op) {
        case TokenKind::minus:
            return wrapSmall(unaryMinus(expr->type, a), expr->type);
        case TokenKind::tilde:
            return wrapSmall(builder_.unary(Op::bitNot, irType(expr->type), a), expr->type);
        default:
            return builder_.unary(Op::logicalNot, irType(expr->type), a);
        }
    }
    case ExprKind::binary: {
        const Value a = value(expr->a);
        const Value b = value(expr->b);
        return wrapSmall(binary(expr->op, expr->a->type, expr->b->type, a, b), expr->type);
    }
    case ExprKind::logical:
        return logical(expr);
    case ExprKind::conditional:
        return conditional(expr);
    case ExprKind::select: {
        const Value condition = value(expr->a);
        const Value a = value(expr->b);
        const Value b = value(expr->c);
        return builder_.select(irType(expr->type), condition, a, b);
    }
    case ExprKind::assign:
    case ExprKind::compound:
        return assign(expr, nullptr);
    case ExprKind::step:
        return step(expr);
    case ExprKind::convert: {
        const Value a = value(expr->a);
        return expr->type->isVoid() ? ir::kNoValue : convert(a, expr->a->type, expr->type);
    }
    case ExprKind::bitCast: {
        const Value a = value(expr->a);
        const Type* from = unpacked(expr->a->type);
        if (from->scalar()->size < 4 || expr->type->scalar()->size < 4) {
            return fromWords(wordsOf(a, from), expr->type);
        }
        return builder_.unary(Op::bitcast, irType(expr->type), a);
    }
    case ExprKind::construct:
        return construct(expr);
    case ExprKind::call:
        return call(expr);
    case ExprKind::library:
        return library(expr);
    case ExprKind::comma:
        value(expr->a);
        return value(expr->b);
    case ExprKind::pointerStep:
    case ExprKind::list:
        break; // exists only until its call is resolved
    case ExprKind::functionConstant:
        return wrapSmall(builder_.specialised(irType(expr->type), expr->index), expr->type);
    }
    return ir::kNoValue;
}

// --- conversions

// Integers of 8 and 16 bits are carried in 32, wrapped to their range after every operation.
Lowerer::Value Lowerer::wrapSmall(Value wide, const Type* type) {
    const Type* scalar = type->scalar();
    if (!scalar->isInteger() || scalar->isBool() || scalar->size >= 4) {
        return wide;
    }
    const ir::TypeId irTypeId = irType(type);
    const uint32_t bits = scalar->size * 8;
    if (!scalar->isSigned()) {
        return builder_.binary(Op::bitAnd, irTypeId, wide,
                               builder_.splat(irTypeId, builder_.intConstant((1U << bits) - 1)));
    }
    const Value shift = builder_.splat(irTypeId, builder_.intConstant(32 - bits));
    return builder_.binary(Op::shiftRightArithmetic, irTypeId,
                           builder_.binary(Op::shiftLeft, irTypeId, wide, shift), shift);
}

Lowerer::Value Lowerer::convertScalars(Value from, const Type* source, const Type* target,
                                       uint32_t count) {
    if (source == target) {
        return from;
    }
    const ir::TypeId wanted = ir::vectorOf(irType(target), count);
    const ir::TypeId given = ir::vectorOf(irType(source), count);
    if (target->isBool()) {
        const Op op = source->isFloating() ? Op::fNotEqual : Op::iNotEqual;
        return builder_.binary(op, wanted, from, builder_.zero(given));
    }
    if (source->isBool()) {
        const Value one = target->isFloating() ? builder_.floatConstant(1.0F)
                                               : builder_.constant(irType(target), 1);
        return builder_.select(wanted, from, builder_.splat(wanted, one), builder_.zero(wanted));
    }
    if (source->isFloating() && target->isFloating()) {
        return from;
    }
    if (target->isFloating()) {
        return builder_.unary(source->isSigned() ? Op::signedToFloat : Op::unsignedToFloat, wanted,
                              from);
    }
    if (source->isFloating()) {
        const bool isSigned = target->isSigned() || target->size < 4;
        return wrapSmall(
            builder_.unary(isSigned ? Op::floatToSigned : Op::floatToUnsigned, wanted, from),
            vectorType(target->kind, count));
    }
    if (target->size == 8 || source->size == 8) {
        if (target->size != source->size) {
            from = builder_.unary(source->isSigned() ? Op::signedWiden : Op::unsignedWiden, wanted,
                                  from);
        }
    }
    // A sign reaches beyond the bits that a small unsigned type has.
    const bool narrows = target->size < source->size ||
                         (target->size < 4 && (target->size == source->size ||
                                               (source->isSigned() && !target->isSigned())));
    return narrows ? wrapSmall(from, vectorType(target->kind, count)) : from;
}

Lowerer::Value Lowerer::convert(Value from, const Type* source, const Type* target) {
    source = unpacked(source);
    target = unpacked(target);
    if (source == target) {
        return from;
    }
    if (source->isMatrix() || target->isMatrix()) {
        return from; // half and float matrices are carried alike
    }
    if (source->isEnum()) {
        source = source->element;
    }
    if (target->isEnum()) {
        target = target->element;
    }
    if (!source->isArithmetic() || !target->isArithmetic()) {
        return from;
    }
    const Value converted =
        convertScalars(from, source->scalar(), target->scalar(), source->components());
    return source->isScalar() && target->isVector() ? builder_.splat(irType(target), converted)
                                                    : converted;
}

Lowerer::Value Lowerer::construct(const tree::Expr* expr) {
    const Type* type = expr->type;
    if (isUnion(type)) {
        return unionOf(type, expr->index, value(expr->items[0]));
    }
    std::vector<Value> parts;
    for (const auto* item : expr->items) {
        parts.push_back(value(item));
    }
    const ir::TypeId wanted = irType(type);
    if (type->isMatrix() && parts.size() == 1) {
        // The scalar fills the diagonal.
        const ir::TypeId column = irType(type->element);
        std::vector<Value> columns;
        for (uint32_t i = 0; i < type->count; ++i) {
            const Value empty = builder_.zero(column);
            columns.push_back(i < type->element->count ? builder_.insert(empty, parts[0], i)
                                                       : empty);
        }
        return builder_.construct(wanted, columns);
    }
    if (type->isVector()) {
        // Constants and parts that can be seen through are spread, so that they fold.
        bool spread = true;
        for (const Value part : parts) {
            spread = spread && (builder_.componentCount(builder_.typeOf(part)) == 1 ||
                                builder_.isConstant(part));
        }
        if (spread) {
            std::vector<Value> scalars;
            for (const Value part : parts) {
                const uint32_t count = builder_.componentCount(builder_.typeOf(part));
                for (uint32_t i = 0; i < count; ++i) {
                    scalars.push_back(count == 1 ? part : builder_.extract(part, i));
                }
            }
            return builder_.construct(wanted, scalars);
        }
        if (parts.size() == 1) {
            return parts[0];
        }
    }
    if (type->isStruct() && parts.empty()) {
        return zeroOf(type);
    }
    return builder_.construct(wanted, parts);
}

// --- choices

Lowerer::Value Lowerer::choose(Value condition, const Type* type, const tree::Expr* a,
                               const tree::Expr* b) {
    const ir::BlockId whenTrue = builder_.makeBlock();
    const ir::BlockId whenFalse = builder_.makeBlock();
    const ir::BlockId after = builder_.makeBlock();
    const size_t mark = log_.size();
    const uint32_t result = type->isVoid() ? 0 : newVariable(ir::kNoValue);
    std::vector<Edge> edges;
    builder_.selectionMerge(after);
    builder_.conditional(condition, whenTrue, whenFalse);
    const tree::Expr* const branches[] = {a, b};
    const ir::BlockId blocks[] = {whenTrue, whenFalse};
    for (size_t i = 0; i < 2; ++i) {
        builder_.start(*function_, blocks[i]);
        // A missing branch is the constant that decides && and ||.
        const Value chosen = branches[i] != nullptr ? value(branches[i])
                                                    : builder_.boolConstant(i != 0 ? false : true);
        if (!type->isVoid()) {
            setVariable(result, chosen);
        }
        edges.push_back(edge(mark));
        builder_.branch(after);
        rollBack(mark);
    }
    merge(after, edges);
    return type->isVoid() ? ir::kNoValue : module_.resolve(current_[result]);
}

Lowerer::Value Lowerer::conditional(const tree::Expr* expr) {
    constexpr uint32_t kSelectCost = 24;
    const Value condition = value(expr->a);
    if (const auto known = builder_.scalarBits(condition)) {
        return value(*known != 0 ? expr->b : expr->c);
    }
    const bool memory = isMemoryType(expr->type);
    if (expr->b->simple && expr->c->simple && expr->b->cost + expr->c->cost <= kSelectCost &&
        !memory && !expr->type->isVoid()) {
        const Value a = value(expr->b);
        const Value b = value(expr->c);
        return builder_.select(irType(expr->type), condition, a, b);
    }
    return choose(condition, expr->type, expr->b, expr->c);
}

Lowerer::Value Lowerer::logical(const tree::Expr* expr) {
    constexpr uint32_t kPlainCost = 16;
    const bool both = expr->op == TokenKind::ampersandAmpersand;
    const Value a = value(expr->a);
    if (const auto known = builder_.scalarBits(a)) {
        return (*known != 0) == both ? value(expr->b) : a;
    }
    if (expr->b->simple && expr->b->cost <= kPlainCost) {
        const Value b = value(expr->b);
        return builder_.binary(both ? Op::logicalAnd : Op::logicalOr, ir::kBool, a, b);
    }
    return both ? choose(a, boolType(), expr->b, nullptr) : choose(a, boolType(), nullptr, expr->b);
}

// --- assignments

// `target`, where wanted, receives the place that was assigned.
Lowerer::Value Lowerer::assign(const tree::Expr* expr, Place* target) {
    if (expr->type->holdsResources()) {
        Binding* assigned = findBinding(expr->a);
        if (assigned == nullptr) {
            error(expr->range,
                  "what this '" + toText(expr->type) + "' stands for is not known when compiling");
            return ir::kNoValue;
        }
        const Binding source = bound(expr->type, expr->b);
        assignParts(expr->type, *assigned, source, expr->range);
        return ir::kNoValue;
    }
    if (expr->kind == ExprKind::assign) {
        const Value source = value(expr->b);
        const Place assigned = place(expr->a);
        store(assigned, source);
        if (target != nullptr) {
            *target = assigned;
        }
        return source;
    }
    const Value right = value(expr->b);
    const Place assigned = place(expr->a);
    const Type* type = expr->a->type;
    const Type* computed = expr->c->type;
    const Value left = convert(load(assigned), type, computed);
    const Value sum = binary(expr->op, computed, expr->b->type, left, right);
    // The result of an operation on one type is of that type but where a matrix is involved.
    const Type* resultType = computed->isVector() && expr->b->type->isMatrix()
                                 ? vectorType(computed->element->kind, expr->b->type->count)
                                 : computed;
    const Value stored = convert(wrapSmall(sum, resultType), resultType, type);
    store(assigned, stored);
    if (target != nullptr) {
        *target = assigned;
    }
    return stored;
}

} // namespace msl
