#include <cmath>

#include <spirv/unified1/GLSL.std.450.h>

#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

Lowerer::Value Lowerer::floatSplat(ir::TypeId type, float number) {
    return builder_.splat(type, builder_.floatConstant(number));
}

Lowerer::Value Lowerer::intSplat(ir::TypeId type, uint64_t number) {
    return builder_.splat(type, builder_.constant(builder_.componentType(type), number));
}

Lowerer::Value Lowerer::minMax(const Type* type, bool max, Value a, Value b) {
    const Type* scalar = type->scalar();
    const uint32_t code = scalar->isFloating() ? (max ? GLSLstd450NMax : GLSLstd450NMin)
                          : scalar->isSigned() ? (max ? GLSLstd450SMax : GLSLstd450SMin)
                                               : (max ? GLSLstd450UMax : GLSLstd450UMin);
    return builder_.extended(code, irType(type), {a, b});
}

Lowerer::Value Lowerer::special(const tree::Expr* expr, const std::vector<Value>& x) {
    const Special what = expr->library->special;
    const Type* type = expr->type;
    const Type* operand = expr->items.empty() ? type : unpacked(expr->items[0]->type);
    const ir::TypeId wanted = irType(type);
    const Type* scalar = operand->scalar();
    switch (what) {
    case Special::abs:
        if (scalar->isFloating()) {
            return builder_.extended(GLSLstd450FAbs, wanted, {x[0]});
        }
        return scalar->isSigned()
                   ? wrapSmall(builder_.extended(GLSLstd450SAbs, wanted, {x[0]}), type)
                   : x[0];
    case Special::min:
    case Special::max:
        return minMax(type, what == Special::max, x[0], x[1]);
    case Special::min3:
    case Special::max3: {
        const bool max = what == Special::max3;
        return minMax(type, max, minMax(type, max, x[0], x[1]), x[2]);
    }
    case Special::median3:
        return minMax(type, true, minMax(type, false, x[0], x[1]),
                      minMax(type, false, minMax(type, true, x[0], x[1]), x[2]));
    case Special::clamp:
        if (scalar->isFloating()) {
            return builder_.extended(GLSLstd450NClamp, wanted, {x[0], x[1], x[2]});
        }
        return minMax(type, false, minMax(type, true, x[0], x[1]), x[2]);
    case Special::selectParts:
        return builder_.select(wanted, x[2], x[1], x[0]);
    case Special::all:
    case Special::any:
        return operand->isScalar()
                   ? x[0]
                   : builder_.unary(what == Special::all ? Op::all : Op::any, ir::kBool, x[0]);
    case Special::determinant:
        return builder_.extended(GLSLstd450Determinant, wanted, {x[0]});
    case Special::packUnorm4:
    case Special::packSnorm4:
    case Special::packUnorm2:
    case Special::packSnorm2:
    case Special::unpackUnorm4:
    case Special::unpackSnorm4:
    case Special::unpackUnorm2:
    case Special::unpackSnorm2:
        return packSpecial(what, x);
    case Special::groupReduce:
    case Special::groupInclusive:
    case Special::groupExclusive:
    case Special::groupPlain:
    case Special::quadReduce:
    case Special::quadShuffle:
    case Special::quadMove:
        return groupFunction(expr, x);
    default:
        break;
    }
    return scalar->isFloating() ? floatSpecial(what, expr, x) : integerSpecial(what, operand, x);
}

Lowerer::Value Lowerer::floatSpecial(Special what, const tree::Expr* expr,
                                     const std::vector<Value>& x) {
    const Type* operand = unpacked(expr->items[0]->type);
    const ir::TypeId type = irType(operand);
    const uint32_t count = operand->components();
    const ir::TypeId truth = ir::vectorOf(ir::kBool, count);
    const ir::TypeId integer = ir::vectorOf(ir::kInt, count);
    const auto unary = [&](uint32_t code, Value a) { return builder_.extended(code, type, {a}); };
    const auto op = [&](Op code, Value a, Value b) { return builder_.binary(code, type, a, b); };
    const auto bits = [&](Value a) { return builder_.unary(Op::bitcast, integer, a); };
    const auto fromBits = [&](Value a) { return builder_.unary(Op::bitcast, type, a); };
    const auto intOp = [&](Op code, Value a, Value b) {
        return builder_.binary(code, integer, a, b);
    };
    switch (what) {
    case Special::saturate:
        return builder_.extended(GLSLstd450NClamp, type,
                                 {x[0], builder_.zero(type), floatSplat(type, 1.0F)});
    case Special::mix: {
        if (builder_.isSplatOf(x[2], 0)) {
            return x[0];
        }
        return builder_.extended(GLSLstd450FMix, type, {x[0], x[1], x[2]});
    }
    case Special::powr: {
        // Small whole powers are products; that also holds for negative bases.
        for (const auto& [power, times] : {std::pair{1.0F, 1}, {2.0F, 2}, {3.0F, 3}, {4.0F, 4}}) {
            if (!builder_.isSplatOf(x[1], *builder_.scalarBits(builder_.floatConstant(power)))) {
                continue;
            }
            if (times == 1) {
                return x[0];
            }
            const Value square = op(Op::fMul, x[0], x[0]);
            return times == 2   ? square
                   : times == 3 ? op(Op::fMul, square, x[0])
                                : op(Op::fMul, square, square);
        }
        return builder_.extended(GLSLstd450Pow, type, {x[0], x[1]});
    }
    case Special::exp10:
        return unary(GLSLstd450Exp2, op(Op::fMul, x[0], floatSplat(type, 3.32192809F)));
    case Special::log10:
        return op(Op::fMul, unary(GLSLstd450Log2, x[0]), floatSplat(type, 0.301029996F));
    case Special::sinpi:
    case Special::cospi:
    case Special::tanpi: {
        const Value angle = op(Op::fMul, x[0], floatSplat(type, 3.14159265F));
        return unary(what == Special::sinpi   ? GLSLstd450Sin
                     : what == Special::cospi ? GLSLstd450Cos
                                              : GLSLstd450Tan,
                     angle);
    }
    case Special::divide:
        return op(Op::fDiv, x[0], x[1]);
    case Special::fmod: {
        // x - y trunc(x / y), the specification's own definition.
        const Value quotient = unary(GLSLstd450Trunc, op(Op::fDiv, x[0], x[1]));
        return op(Op::fSub, x[0], op(Op::fMul, x[1], quotient));
    }
    case Special::round: {
        // Halves go away from zero.
        const Value whole = unary(GLSLstd450Trunc, x[0]);
        const Value rest = unary(GLSLstd450FAbs, op(Op::fSub, x[0], whole));
        const Value up = builder_.binary(Op::fGreaterEqual, truth, rest, floatSplat(type, 0.5F));
        return builder_.select(type, up, op(Op::fAdd, whole, unary(GLSLstd450FSign, x[0])), whole);
    }
    case Special::fdim:
        return minMax(operand, true, op(Op::fSub, x[0], x[1]), builder_.zero(type));
    case Special::lengthSquared:
    case Special::distanceSquared: {
        const Value d = what == Special::lengthSquared ? x[0] : op(Op::fSub, x[0], x[1]);
        return operand->isScalar() ? op(Op::fMul, d, d)
                                   : builder_.binary(Op::dot, ir::kFloat, d, d);
    }
    case Special::copysign: {
        const Value magnitude = intOp(Op::bitAnd, bits(x[0]), intSplat(integer, 0x7FFFFFFFU));
        const Value sign = intOp(Op::bitAnd, bits(x[1]), intSplat(integer, 0x80000000U));
        return fromBits(intOp(Op::bitOr, magnitude, sign));
    }
    case Special::signbit:
        return builder_.binary(Op::sLess, truth, bits(x[0]), builder_.zero(integer));
    case Special::isfinite:
    case Special::isnormal: {
        const Value exponent = intOp(Op::bitAnd, bits(x[0]), intSplat(integer, 0x7F800000U));
        const Value finite =
            builder_.binary(Op::iNotEqual, truth, exponent, intSplat(integer, 0x7F800000U));
        if (what == Special::isfinite) {
            return finite;
        }
        return builder_.binary(
            Op::logicalAnd, truth, finite,
            builder_.binary(Op::iNotEqual, truth, exponent, builder_.zero(integer)));
    }
    case Special::isunordered:
    case Special::isordered: {
        const Value either =
            builder_.binary(Op::logicalOr, truth, builder_.unary(Op::isNan, truth, x[0]),
                            builder_.unary(Op::isNan, truth, x[1]));
        return what == Special::isunordered ? either
                                            : builder_.unary(Op::logicalNot, truth, either);
    }
    case Special::sincos: {
        const Value sine = unary(GLSLstd450Sin, x[0]);
        const Value cosine = unary(GLSLstd450Cos, x[0]);
        store(place(expr->items[1]), cosine);
        return sine;
    }
    case Special::modf: {
        const Value whole = unary(GLSLstd450Trunc, x[0]);
        store(place(expr->items[1]), whole);
        return op(Op::fSub, x[0], whole);
    }
    case Special::ldexp:
        return builder_.extended(GLSLstd450Ldexp, type, {x[0], x[1]});
    case Special::frexp:
    case Special::ilogb: {
        // The exponent from the bits; zero stays zero, as frexp has it.
        const Value raw =
            intOp(Op::bitAnd, intOp(Op::shiftRightLogical, bits(x[0]), intSplat(integer, 23)),
                  intSplat(integer, 255));
        if (what == Special::ilogb) {
            return intOp(Op::iSub, raw, intSplat(integer, 127));
        }
        const Value isZero = builder_.binary(Op::fEqual, truth, x[0], builder_.zero(type));
        const Value exponent = builder_.select(integer, isZero, builder_.zero(integer),
                                               intOp(Op::iSub, raw, intSplat(integer, 126)));
        store(place(expr->items[1]), exponent);
        const Value fraction =
            fromBits(intOp(Op::bitOr, intOp(Op::bitAnd, bits(x[0]), intSplat(integer, 0x807FFFFFU)),
                           intSplat(integer, 0x3F000000U)));
        return builder_.select(type, isZero, x[0], fraction);
    }
    case Special::nextafter: {
        // One step of the bits, towards or away from zero.
        const Value up = builder_.binary(Op::fGreater, truth, x[1], x[0]);
        const Value positive = builder_.binary(Op::fGreater, truth, x[0], builder_.zero(type));
        const Value away = builder_.binary(Op::logicalEqual, truth, up, positive);
        const Value moved = intOp(
            Op::iAdd, bits(x[0]),
            builder_.select(integer, away, intSplat(integer, 1), intSplat(integer, UINT32_MAX)));
        const Value tiny =
            builder_.select(integer, up, intSplat(integer, 1), intSplat(integer, 0x80000001U));
        const Value isZero = builder_.binary(Op::fEqual, truth, x[0], builder_.zero(type));
        const Value same = builder_.binary(Op::fEqual, truth, x[0], x[1]);
        return builder_.select(type, same, x[1],
                               fromBits(builder_.select(integer, isZero, tiny, moved)));
    }
    default:
        return builder_.undefined(irType(expr->type));
    }
}

Lowerer::Value Lowerer::integerSpecial(Special what, const Type* type,
                                       const std::vector<Value>& x) {
    const ir::TypeId wanted = irType(type);
    const Type* scalar = type->scalar();
    const bool isSigned = scalar->isSigned();
    const uint32_t width = scalar->size * 8;
    const ir::TypeId truth = ir::vectorOf(ir::kBool, type->components());
    const auto op = [&](Op code, Value a, Value b) { return builder_.binary(code, wanted, a, b); };
    const auto wrapped = [&](Value a) { return wrapSmall(a, type); };
    // Small integers as unsigned ones, without the sign's copies above their own bits.
    const auto ownBits = [&](Value a) {
        return width < 32 ? op(Op::bitAnd, a, intSplat(wanted, (uint64_t{1} << width) - 1)) : a;
    };
    const auto less = [&](Value a, Value b) {
        return builder_.binary(isSigned ? Op::sLess : Op::uLess, truth, a, b);
    };
    switch (what) {
    case Special::absdiff: {
        const Value difference = op(Op::iSub, x[0], x[1]);
        return builder_.select(wanted, less(x[0], x[1]), op(Op::iSub, x[1], x[0]), difference);
    }
    case Special::mad:
        return wrapped(op(Op::iAdd, op(Op::iMul, x[0], x[1]), x[2]));
    case Special::popcount:
        return builder_.unary(Op::bitCount, wanted, ownBits(x[0]));
    case Special::reverseBits: {
        const Value reversed = builder_.unary(Op::bitReverse, wanted, x[0]);
        return wrapped(width < 32
                           ? op(Op::shiftRightLogical, reversed, intSplat(wanted, 32 - width))
                           : reversed);
    }
    case Special::clz: {
        const Value highest = builder_.extended(GLSLstd450FindUMsb, wanted, {ownBits(x[0])});
        return op(Op::iSub, intSplat(wanted, width - 1), highest);
    }
    case Special::ctz: {
        const Value lowest = builder_.extended(GLSLstd450FindILsb, wanted, {ownBits(x[0])});
        const Value none = builder_.binary(Op::iEqual, truth, ownBits(x[0]), builder_.zero(wanted));
        return builder_.select(wanted, none, intSplat(wanted, width), lowest);
    }
    case Special::extractBits:
        return builder_.emit(isSigned ? Op::bitFieldSExtract : Op::bitFieldUExtract, wanted,
                             {x[0], x[1], x[2]});
    case Special::insertBits:
        return builder_.emit(Op::bitFieldInsert, wanted, {x[0], x[1], x[2], x[3]});
    case Special::rotate: {
        const Value mask = intSplat(wanted, width - 1);
        const Value left = op(Op::bitAnd, x[1], mask);
        const Value right = op(Op::bitAnd, op(Op::iSub, intSplat(wanted, width), left), mask);
        const Value own = ownBits(x[0]);
        return wrapped(
            op(Op::bitOr, op(Op::shiftLeft, own, left), op(Op::shiftRightLogical, own, right)));
    }
    case Special::hadd:
    case Special::rhadd: {
        // Half the sum without the carry that would be lost.
        const Op shift = isSigned ? Op::shiftRightArithmetic : Op::shiftRightLogical;
        const Value one = intSplat(wanted, 1);
        const Value both =
            what == Special::hadd ? op(Op::bitAnd, x[0], x[1]) : op(Op::bitOr, x[0], x[1]);
        const Value half = op(shift, op(Op::bitXor, x[0], x[1]), one);
        return what == Special::hadd ? op(Op::iAdd, both, half) : op(Op::iSub, both, half);
    }
    case Special::mulhi:
    case Special::madhi: {
        Value high = ir::kNoValue;
        if (width < 32) {
            high = op(isSigned ? Op::shiftRightArithmetic : Op::shiftRightLogical,
                      op(Op::iMul, x[0], x[1]), intSplat(wanted, width));
        } else {
            // By halves: a type of twice the width may need a device feature, or not exist.
            const Value mask = intSplat(wanted, (uint64_t{1} << (width / 2)) - 1);
            const Value sixteen = intSplat(wanted, width / 2);
            const Op shift = isSigned ? Op::shiftRightArithmetic : Op::shiftRightLogical;
            const Value aLow = op(Op::bitAnd, x[0], mask);
            const Value aHigh = op(shift, x[0], sixteen);
            const Value bLow = op(Op::bitAnd, x[1], mask);
            const Value bHigh = op(shift, x[1], sixteen);
            const Value low = op(Op::shiftRightLogical, op(Op::iMul, aLow, bLow), sixteen);
            const Value middle = op(Op::iAdd, op(Op::iMul, aHigh, bLow), low);
            const Value other =
                op(Op::iAdd, op(Op::iMul, aLow, bHigh), op(Op::bitAnd, middle, mask));
            high = op(Op::iAdd, op(Op::iMul, aHigh, bHigh),
                      op(Op::iAdd, op(shift, middle, sixteen), op(shift, other, sixteen)));
        }
        return what == Special::mulhi ? high : wrapped(op(Op::iAdd, high, x[2]));
    }
    case Special::addsat:
    case Special::subsat: {
        const bool add = what == Special::addsat;
        const Value sum = op(add ? Op::iAdd : Op::iSub, x[0], x[1]);
        const auto limit = [&](bool upper) {
            const uint64_t top = isSigned ? (uint64_t{1} << (width - 1)) - 1
                                          : (width == 64 ? UINT64_MAX : (uint64_t{1} << width) - 1);
            const uint64_t bottom = isSigned ? ~top : 0;
            const uint64_t bits = upper ? top : bottom;
            return intSplat(wanted, width == 64 ? bits : bits & UINT32_MAX);
        };
        if (width < 32) {
            return minMax(
                intType()->kind == scalar->kind ? type
                                                : vectorType(TypeKind::intType, type->components()),
                false,
                minMax(vectorType(TypeKind::intType, type->components()), true, sum, limit(false)),
                limit(true));
        }
        if (!isSigned) {
            return add ? builder_.select(wanted, less(sum, x[0]), limit(true), sum)
                       : builder_.select(wanted, less(x[0], x[1]), limit(false), sum);
        }
        // Overflow: the operands agree in sign (differ, for a difference) and the result does not.
        const Value signs = op(Op::bitXor, x[0], x[1]);
        const Value changed = op(Op::bitXor, x[0], sum);
        const Value over =
            op(Op::bitAnd, changed, add ? builder_.unary(Op::bitNot, wanted, signs) : signs);
        const Value overflowed = less(over, builder_.zero(wanted));
        const Value clamped =
            builder_.select(wanted, less(x[0], builder_.zero(wanted)), limit(false), limit(true));
        return builder_.select(wanted, overflowed, clamped, sum);
    }
    default:
        return builder_.undefined(wanted);
    }
}

Lowerer::Value Lowerer::packSpecial(Special what, const std::vector<Value>& x) {
    switch (what) {
    case Special::packUnorm4:
        return builder_.extended(GLSLstd450PackUnorm4x8, ir::kInt, {x[0]});
    case Special::packSnorm4:
        return builder_.extended(GLSLstd450PackSnorm4x8, ir::kInt, {x[0]});
    case Special::packUnorm2:
        return builder_.extended(GLSLstd450PackUnorm2x16, ir::kInt, {x[0]});
    case Special::packSnorm2:
        return builder_.extended(GLSLstd450PackSnorm2x16, ir::kInt, {x[0]});
    case Special::unpackUnorm4:
        return builder_.extended(GLSLstd450UnpackUnorm4x8, ir::vectorOf(ir::kFloat, 4), {x[0]});
    case Special::unpackSnorm4:
        return builder_.extended(GLSLstd450UnpackSnorm4x8, ir::vectorOf(ir::kFloat, 4), {x[0]});
    case Special::unpackUnorm2:
        return builder_.extended(GLSLstd450UnpackUnorm2x16, ir::vectorOf(ir::kFloat, 2), {x[0]});
    default:
        return builder_.extended(GLSLstd450UnpackSnorm2x16, ir::vectorOf(ir::kFloat, 2), {x[0]});
    }
}

} // namespace msl
