// Atomic operations on device memory.
#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

namespace {

constexpr uint32_t kDevice = 1; // the scope, as SPIR-V numbers it

} // namespace

// Relaxed, as the language's atomics are, and for the whole device.
Lowerer::Value Lowerer::atomicOperation(Op op, ir::TypeId type, Value pointer, Value operand) {
    return builder_.emit(
        op, type, {pointer, builder_.intConstant(kDevice), builder_.intConstant(0), operand});
}

Lowerer::Value Lowerer::atomic(const tree::Expr* expr) {
    const Place object = pointerTarget(expr->items[0]);
    const Type* type = expr->items[0]->type->element;
    const ir::TypeId held = irType(type);
    if (object.root != Place::Root::buffer && object.root != Place::Root::words) {
        error(expr->range, "which atomic this is cannot be known when compiling");
        return expr->type->isVoid() ? ir::kNoValue : builder_.undefined(irType(expr->type));
    }
    const Value pointer =
        object.root == Place::Root::words ? wordPointer(object, 0) : pointerOf(object, type);
    const Value scope = builder_.intConstant(kDevice);
    const Value relaxed = builder_.intConstant(0);
    const Op op = static_cast<Op>(expr->index);
    switch (op) {
    case Op::atomicLoad:
        return builder_.emit(op, held, {pointer, scope, relaxed});
    case Op::atomicStore:
        builder_.emit(op, ir::kVoid, {pointer, scope, relaxed, value(expr->items[1])});
        return ir::kNoValue;
    case Op::atomicCompareExchange: {
        const Place expected = pointerTarget(expr->items[1]);
        const Value compared = load(expected);
        const Value wanted = value(expr->items[2]);
        const Value before =
            builder_.emit(op, held, {pointer, scope, relaxed, relaxed, wanted, compared});
        store(expected, before);
        return builder_.binary(Op::iEqual, ir::kBool, before, compared);
    }
    default:
        return atomicOperation(op, held, pointer, value(expr->items[1]));
    }
}

} // namespace msl
