// What is allowed and most likely not meant.
#include <bit>
#include <cmath>

#include "msl/sema/sema.h"

namespace msl {

using tree::ExprKind;

// An expression that stands as a statement and does nothing.
void Sema::warnUnusedValue(const tree::Expr& expr) {
    switch (expr.kind) {
    case ExprKind::constant:
    case ExprKind::variable:
    case ExprKind::field:
    case ExprKind::swizzle:
    case ExprKind::unary:
    case ExprKind::binary:
    case ExprKind::select:
    case ExprKind::construct:
        if (expr.simple && !expr.type->isVoid()) {
            diagnostics_.warning(expr.range, "the value of this expression is not used");
        }
        break;
    default:
        break;
    }
}

// A number with a fraction that becomes an integer without anybody saying so.
void Sema::warnLostFraction(const tree::Expr& expr, const Type* to) {
    if (expr.kind != ExprKind::constant || !expr.type->isFloating() || !to->isScalar() ||
        to->isFloating() || to->isBool()) {
        return;
    }
    const double number = std::bit_cast<double>(expr.bits);
    const auto whole = convertScalar({expr.type, expr.bits}, to);
    if (std::isfinite(number) && std::trunc(number) != number && whole) {
        diagnostics_.warning(expr.range,
                             "this number loses its fraction when it becomes '" + toText(to) + "'");
    }
}

// A function's locals that nothing names, and its ways to the end without a value. Instances of
// templates are left out: what one of them does not use another one may.
void Sema::warnAboutFunction(const tree::Function& function) {
    if (diagnostics_.hasErrors() || function.space != nullptr) {
        return;
    }
    for (const auto* local : state_->locals) {
        bool meant = local->isUsed || local->name == nullptr ||
                     (recordOf(local->type) != nullptr &&
                      methodOf(local->type, recordOf(local->type)->constructors) != nullptr);
        for (const auto& attribute : local->attributes) {
            meant = meant || attribute.name->text == "maybe_unused";
        }
        if (!meant) {
            diagnostics_.warning(local->range, "the variable '" + std::string(local->name->text) +
                                                   "' is not used");
        }
    }
    const auto* body = function.body;
    if (body == nullptr || state_->result == nullptr || state_->result->isVoid() ||
        body->alwaysReturns || body->items.empty()) {
        return;
    }
    const auto last = body->items.back()->kind;
    if (last != tree::StmtKind::loop && last != tree::StmtKind::multiway) {
        diagnostics_.warning(function.range, "the function '" + std::string(function.name->text) +
                                                 "' may end without returning a value");
    }
}

} // namespace msl
