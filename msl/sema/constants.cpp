#include <bit>
#include <cmath>

#include "msl/ir/builder.h"
#include "msl/sema/depth.h"
#include "msl/sema/evaluator.h"

namespace msl {
namespace {

double asDouble(uint64_t bits) { return std::bit_cast<double>(bits); }
uint64_t bitsOf(double value) { return std::bit_cast<uint64_t>(value); }

// An integer's bits cut to the type's width and widened again by its sign.
uint64_t wrapped(uint64_t bits, const Type* type) {
    if (type->isBool()) {
        return bits != 0 ? 1 : 0;
    }
    const uint32_t shift = 64 - type->size * 8;
    if (type->isSigned()) {
        return static_cast<uint64_t>(static_cast<int64_t>(bits << shift) >> shift);
    }
    return (bits << shift) >> shift;
}

} // namespace

std::optional<Sema::Scalar> Sema::convertScalar(Scalar value, const Type* to) {
    if (to->isEnum()) {
        to = to->element;
    }
    const Type* from = value.type->isEnum() ? value.type->element : value.type;
    if (!to->isScalar() || !from->isScalar()) {
        return std::nullopt;
    }
    if (to->isFloating()) {
        double number = asDouble(value.bits);
        if (!from->isFloating()) {
            number = from->isSigned() ? static_cast<double>(static_cast<int64_t>(value.bits))
                                      : static_cast<double>(value.bits);
        }
        return Scalar{to, bitsOf(static_cast<double>(static_cast<float>(number)))};
    }
    if (from->isFloating()) {
        const double number = asDouble(value.bits);
        if (to->isBool()) {
            return Scalar{to, number != 0 ? 1U : 0U};
        }
        if (!(std::abs(number) < 9.2e18)) {
            return std::nullopt;
        }
        return Scalar{to, wrapped(static_cast<uint64_t>(static_cast<int64_t>(number)), to)};
    }
    return Scalar{to, wrapped(value.bits, to)};
}

// One constant takes so much work at most, and all of them together.
bool Sema::spendConstantStep() {
    return ++constantSteps_ <= kMaxConstantSteps && ++allConstantSteps_ <= kMaxAllConstantSteps;
}

std::optional<Sema::Scalar> Sema::evaluate(const tree::Expr* expr) {
    if (expr == nullptr || !spendConstantStep()) {
        return std::nullopt;
    }
    const DepthGuard guard(depth_);
    if (depth_ > kMaxLoweringDepth) {
        return std::nullopt;
    }
    return evaluateAtDepth(expr);
}

std::optional<Sema::Scalar> Sema::evaluateAtDepth(const tree::Expr* expr) {
    switch (expr->kind) {
    case tree::ExprKind::constant:
        return Scalar{expr->type, expr->bits};
    case tree::ExprKind::zero:
        return expr->type->isScalar() ? std::optional(Scalar{expr->type, 0}) : std::nullopt;
    case tree::ExprKind::variable:
        if (expr->variable->isConst && expr->variable->init != nullptr &&
            expr->type->scalar() == expr->type) {
            return evaluate(expr->variable->init);
        }
        if (expr->variable->isConst && expr->variable->init != nullptr && expr->type->isEnum()) {
            return evaluate(expr->variable->init);
        }
        return std::nullopt;
    case tree::ExprKind::convert: {
        const auto value = evaluate(expr->a);
        return value ? convertScalar(*value, expr->type) : std::nullopt;
    }
    case tree::ExprKind::conditional: {
        const auto condition = evaluate(expr->a);
        return condition ? evaluate(condition->bits != 0 ? expr->b : expr->c) : std::nullopt;
    }
    case tree::ExprKind::logical: {
        const auto left = evaluate(expr->a);
        if (!left) {
            return std::nullopt;
        }
        const bool both = expr->op == TokenKind::ampersandAmpersand;
        if ((left->bits != 0) != both) {
            return Scalar{boolType(), left->bits};
        }
        return evaluate(expr->b);
    }
    case tree::ExprKind::unary: {
        const auto value = evaluate(expr->a);
        return value && expr->type->isScalar() ? foldUnary(expr->op, expr->type, *value)
                                               : std::nullopt;
    }
    case tree::ExprKind::binary: {
        const auto left = evaluate(expr->a);
        const auto right = evaluate(expr->b);
        return left && right && left->type->isScalar() && right->type->isScalar()
                   ? foldBinary(expr->op, expr->type, *left, *right)
                   : std::nullopt;
    }
    default:
        return Evaluator(*this).scalar(expr);
    }
}

// An operation on one scalar, and on two of one type. `type` is that of the result.
std::optional<Sema::Scalar> Sema::foldUnary(TokenKind op, const Type* type, Scalar value) {
    switch (op) {
    case TokenKind::minus:
        return type->isFloating() ? Scalar{type, bitsOf(-asDouble(value.bits))}
                                  : Scalar{type, wrapped(0 - value.bits, type)};
    case TokenKind::tilde:
        return Scalar{type, wrapped(~value.bits, type)};
    case TokenKind::exclamation:
        return Scalar{boolType(), value.bits == 0 ? 1U : 0U};
    default:
        return value;
    }
}

std::optional<Sema::Scalar> Sema::foldBinary(TokenKind op, const Type* type, Scalar left,
                                             Scalar right) {
    const Type* operand = left.type;
    if (operand->isFloating()) {
        const double a = asDouble(left.bits);
        const double b = asDouble(right.bits);
        const auto number = [&](double value) {
            return Scalar{type, bitsOf(static_cast<double>(static_cast<float>(value)))};
        };
        const auto truth = [](bool value) { return Scalar{boolType(), value ? 1U : 0U}; };
        switch (op) {
        case TokenKind::plus:
            return number(a + b);
        case TokenKind::minus:
            return number(a - b);
        case TokenKind::star:
            return number(a * b);
        case TokenKind::slash:
            return b == 0 ? std::nullopt : std::optional(number(a / b));
        case TokenKind::less:
            return truth(a < b);
        case TokenKind::greater:
            return truth(a > b);
        case TokenKind::lessEqual:
            return truth(a <= b);
        case TokenKind::greaterEqual:
            return truth(a >= b);
        case TokenKind::equalEqual:
            return truth(a == b);
        case TokenKind::exclamationEqual:
            return truth(a != b);
        default:
            return std::nullopt;
        }
    }
    const bool isSigned = operand->isSigned() || operand->isBool();
    const auto pick = [&](ir::Op whenSigned, ir::Op whenUnsigned) {
        return isSigned ? whenSigned : whenUnsigned;
    };
    ir::Op folding = ir::Op::none;
    switch (op) {
    case TokenKind::plus:
        folding = ir::Op::iAdd;
        break;
    case TokenKind::minus:
        folding = ir::Op::iSub;
        break;
    case TokenKind::star:
        folding = ir::Op::iMul;
        break;
    case TokenKind::slash:
        folding = pick(ir::Op::sDiv, ir::Op::uDiv);
        break;
    case TokenKind::percent:
        folding = pick(ir::Op::sRem, ir::Op::uMod);
        break;
    case TokenKind::ampersand:
        folding = ir::Op::bitAnd;
        break;
    case TokenKind::pipe:
        folding = ir::Op::bitOr;
        break;
    case TokenKind::caret:
        folding = ir::Op::bitXor;
        break;
    case TokenKind::shiftLeft:
        folding = ir::Op::shiftLeft;
        break;
    case TokenKind::shiftRight:
        folding = pick(ir::Op::shiftRightArithmetic, ir::Op::shiftRightLogical);
        break;
    case TokenKind::less:
        folding = pick(ir::Op::sLess, ir::Op::uLess);
        break;
    case TokenKind::greater:
        folding = pick(ir::Op::sGreater, ir::Op::uGreater);
        break;
    case TokenKind::lessEqual:
        folding = pick(ir::Op::sLessEqual, ir::Op::uLessEqual);
        break;
    case TokenKind::greaterEqual:
        folding = pick(ir::Op::sGreaterEqual, ir::Op::uGreaterEqual);
        break;
    case TokenKind::equalEqual:
        folding = ir::Op::iEqual;
        break;
    case TokenKind::exclamationEqual:
        folding = ir::Op::iNotEqual;
        break;
    default:
        return std::nullopt;
    }
    const auto folded = ir::foldScalar(folding, ir::kLong, left.bits, right.bits);
    if (!folded) {
        return std::nullopt;
    }
    return Scalar{type, wrapped(*folded, type)};
}

std::optional<int64_t> Sema::integerConstant(const ast::Expr* expr, std::string_view what) {
    tree::Expr* analysed = value(expr);
    if (analysed == nullptr) {
        return std::nullopt;
    }
    constantSteps_ = 0;
    const auto scalar = evaluate(analysed);
    if (!scalar || !(scalar->type->isInteger() || scalar->type->isEnum())) {
        error(expr->range, std::string(what) + " must be an integer known when compiling");
        return std::nullopt;
    }
    return static_cast<int64_t>(scalar->bits);
}

} // namespace msl
