#include "msl/sema/evaluator.h"

#include <algorithm>

#include "msl/sema/depth.h"

namespace msl {

using tree::ExprKind;
using tree::StmtKind;

size_t Sema::Evaluator::scalarCount(const Type* type) {
    switch (type->kind) {
    case TypeKind::vector:
        return type->count;
    case TypeKind::matrix:
        return size_t{type->count} * type->element->count;
    case TypeKind::array:
        return type->length * scalarCount(type->element);
    case TypeKind::structure: {
        size_t count = 0;
        for (const auto& field : type->structure->fields) {
            count += scalarCount(field.type);
        }
        return count;
    }
    default:
        return type->isScalar() || type->isEnum() ? 1 : 0;
    }
}

const Type* Sema::Evaluator::scalarOf(const Type* type) {
    return type->isEnum() ? type->element : type->scalar();
}

// A step, and the more of them the more scalars it moves.
bool Sema::Evaluator::spend(size_t scalars) {
    constexpr size_t kScalarsPerStep = 16;
    const auto moved = static_cast<uint32_t>(scalars / kScalarsPerStep);
    sema_.constantSteps_ += moved;
    sema_.allConstantSteps_ += moved;
    return sema_.spendConstantStep();
}

Sema::Evaluator::Place Sema::Evaluator::hold(Value value) {
    cells_.push_back(std::move(value));
    return {&cells_.back(), 0};
}

void Sema::Evaluator::give(const tree::Variable* variable, Place place) {
    frame_->variables[variable] = place;
}

std::optional<Sema::Scalar> Sema::Evaluator::scalar(const tree::Expr* expr) {
    const auto result = scalarCount(expr->type) == 1 ? value(expr) : std::nullopt;
    return result && result->size() == 1 ? std::optional(Scalar{expr->type, result->front()})
                                         : std::nullopt;
}

std::optional<Sema::Evaluator::Value> Sema::Evaluator::value(const tree::Expr* expr) {
    const DepthGuard guard(sema_.depth_);
    if (!spend() || sema_.depth_ > kMaxLoweringDepth || expr->type->holdsResources() ||
        (expr->type->isStruct() && expr->type->structure->isUnion)) {
        return std::nullopt;
    }
    return valueAtDepth(expr);
}

std::optional<Sema::Evaluator::Value> Sema::Evaluator::valueAtDepth(const tree::Expr* expr) {
    switch (expr->kind) {
    case ExprKind::constant:
        return Value{expr->bits};
    case ExprKind::zero: {
        const size_t count = scalarCount(expr->type);
        return count <= kMaxConstantScalars && spend(count) ? std::optional(Value(count))
                                                            : std::nullopt;
    }
    case ExprKind::variable:
    case ExprKind::field:
    case ExprKind::index:
    case ExprKind::deref: {
        const auto source = place(expr);
        const size_t count = scalarCount(expr->type);
        if (!source || source->offset + count > source->cell->size() || !spend(count)) {
            return std::nullopt;
        }
        const auto first = source->cell->begin() + static_cast<ptrdiff_t>(source->offset);
        return Value(first, first + static_cast<ptrdiff_t>(count));
    }
    case ExprKind::swizzle: {
        const auto whole = value(expr->a);
        if (!whole) {
            return std::nullopt;
        }
        Value picked;
        for (uint8_t i = 0; i < expr->componentCount; ++i) {
            picked.push_back((*whole)[expr->components[i]]);
        }
        return picked;
    }
    case ExprKind::unary:
    case ExprKind::binary:
        return byComponent(expr);
    case ExprKind::logical: {
        bool a = false;
        bool b = false;
        const bool both = expr->op == TokenKind::ampersandAmpersand;
        if (!truth(expr->a, a)) {
            return std::nullopt;
        }
        if (a != both) {
            return Value{a ? 1U : 0U};
        }
        return truth(expr->b, b) ? std::optional(Value{b ? 1U : 0U}) : std::nullopt;
    }
    case ExprKind::conditional: {
        bool test = false;
        return truth(expr->a, test) ? value(test ? expr->b : expr->c) : std::nullopt;
    }
    case ExprKind::select: {
        const auto test = value(expr->a);
        auto a = value(expr->b);
        const auto b = value(expr->c);
        if (!test || !a || !b) {
            return std::nullopt;
        }
        for (size_t i = 0; i < a->size(); ++i) {
            (*a)[i] = (*test)[i] != 0 ? (*a)[i] : (*b)[i];
        }
        return a;
    }
    case ExprKind::convert: {
        const auto from = value(expr->a);
        return from ? converted(*from, expr->a->type, expr->type) : std::nullopt;
    }
    case ExprKind::construct:
        return construct(expr);
    case ExprKind::assign:
    case ExprKind::compound:
        return assign(expr);
    case ExprKind::step:
        return step(expr);
    case ExprKind::call:
        return call(expr);
    case ExprKind::comma:
        return value(expr->a) ? value(expr->b) : std::nullopt;
    default:
        return std::nullopt;
    }
}

std::optional<Sema::Evaluator::Place> Sema::Evaluator::variable(const tree::Variable& variable) {
    if (const auto known = frame_->variables.find(&variable); known != frame_->variables.end()) {
        return known->second;
    }
    if (!variable.isConst || variable.init == nullptr || variable.isReference) {
        return std::nullopt;
    }
    auto init = value(variable.init);
    if (!init) {
        return std::nullopt;
    }
    const Place made = hold(std::move(*init));
    give(&variable, made);
    return made;
}

std::optional<Sema::Evaluator::Place> Sema::Evaluator::place(const tree::Expr* expr) {
    const DepthGuard guard(sema_.depth_);
    if (!spend() || sema_.depth_ > kMaxLoweringDepth) {
        return std::nullopt;
    }
    switch (expr->kind) {
    case ExprKind::variable:
        return variable(*expr->variable);
    case ExprKind::field: {
        auto base = place(expr->a);
        if (!base || expr->a->type->structure->isUnion) {
            return std::nullopt;
        }
        for (uint32_t i = 0; i < expr->index; ++i) {
            base->offset += scalarCount(expr->a->type->structure->fields[i].type);
        }
        return base;
    }
    case ExprKind::index: {
        if (expr->a->type->isPointer()) {
            return std::nullopt;
        }
        auto base = place(expr->a);
        const auto index = value(expr->b);
        const Type* type = expr->a->type;
        const uint64_t length = type->isArray() ? type->length : type->count;
        if (!base || !index || index->front() >= length) {
            return std::nullopt;
        }
        base->offset += index->front() * scalarCount(expr->type);
        return base;
    }
    case ExprKind::swizzle: {
        auto base = expr->componentCount == 1 ? place(expr->a) : std::nullopt;
        if (base) {
            base->offset += expr->components[0];
        }
        return base;
    }
    case ExprKind::deref:
        return expr->a->kind == ExprKind::addressOf ? place(expr->a->a) : std::nullopt;
    case ExprKind::assign:
    case ExprKind::compound:
        return value(expr) ? place(expr->a) : std::nullopt;
    default: {
        auto made = value(expr);
        return made ? std::optional(hold(std::move(*made))) : std::nullopt;
    }
    }
}

std::optional<Sema::Evaluator::Value> Sema::Evaluator::byComponent(const tree::Expr* expr) {
    const auto a = value(expr->a);
    const auto b = expr->b != nullptr ? value(expr->b) : std::optional(Value());
    if (!a || !b || expr->a->type->isMatrix() || (expr->b != nullptr && a->size() != b->size())) {
        return std::nullopt;
    }
    const Type* operand = scalarOf(expr->a->type);
    const Type* type = scalarOf(expr->type);
    Value result;
    for (size_t i = 0; i < a->size(); ++i) {
        const auto part = expr->b != nullptr
                              ? foldBinary(expr->op, type, {operand, (*a)[i]}, {operand, (*b)[i]})
                              : foldUnary(expr->op, type, {operand, (*a)[i]});
        if (!part) {
            return std::nullopt;
        }
        result.push_back(part->bits);
    }
    return result;
}

std::optional<Sema::Evaluator::Value>
Sema::Evaluator::converted(const Value& from, const Type* source, const Type* target) const {
    if (target->isVoid()) {
        return Value();
    }
    Value result;
    const size_t count = scalarCount(target);
    for (size_t i = 0; i < count; ++i) {
        const auto part =
            convertScalar({scalarOf(source), from[from.size() == 1 ? 0 : i]}, scalarOf(target));
        if (!part) {
            return std::nullopt;
        }
        result.push_back(part->bits);
    }
    return result;
}

std::optional<Sema::Evaluator::Value> Sema::Evaluator::construct(const tree::Expr* expr) {
    const Type* type = expr->type;
    Value result;
    for (const auto* item : expr->items) {
        const auto part = value(item);
        if (!part || result.size() + part->size() > kMaxConstantScalars) {
            return std::nullopt;
        }
        result.insert(result.end(), part->begin(), part->end());
    }
    if (type->isMatrix() && expr->items.size() == 1) {
        // The scalar fills the diagonal.
        Value diagonal(scalarCount(type));
        for (uint32_t i = 0; i < type->count && i < type->element->count; ++i) {
            diagonal[size_t{i} * type->element->count + i] = result.front();
        }
        return diagonal;
    }
    return result.size() == scalarCount(type) ? std::optional(result) : std::nullopt;
}

std::optional<Sema::Evaluator::Value> Sema::Evaluator::assign(const tree::Expr* expr) {
    auto source = value(expr->b);
    if (!source) {
        return std::nullopt;
    }
    if (expr->kind == ExprKind::compound) {
        const auto old = value(expr->a);
        const auto left =
            old ? converted(*old, expr->a->type, expr->c->type) : std::optional<Value>();
        if (!left || left->size() != source->size() || expr->c->type->isMatrix()) {
            return std::nullopt;
        }
        const Type* type = scalarOf(expr->c->type);
        for (size_t i = 0; i < left->size(); ++i) {
            const auto part = foldBinary(expr->op, type, {type, (*left)[i]}, {type, (*source)[i]});
            if (!part) {
                return std::nullopt;
            }
            (*source)[i] = part->bits;
        }
        source = converted(*source, expr->c->type, expr->a->type);
        if (!source) {
            return std::nullopt;
        }
    }
    const bool spread = expr->a->kind == ExprKind::swizzle;
    const auto target = place(spread ? expr->a->a : expr->a);
    const size_t room = spread ? expr->a->a->type->components() : source->size();
    if (!target || target->offset + room > target->cell->size()) {
        return std::nullopt;
    }
    for (size_t i = 0; i < source->size(); ++i) {
        const size_t at = spread ? expr->a->components[i] : i;
        (*target->cell)[target->offset + at] = (*source)[i];
    }
    return source;
}

std::optional<Sema::Evaluator::Value> Sema::Evaluator::step(const tree::Expr* expr) {
    const auto target = place(expr->a);
    const auto old = value(expr->a);
    if (!target || !old || old->size() != 1) {
        return std::nullopt;
    }
    const Type* type = scalarOf(expr->a->type);
    const auto one = convertScalar({intType(), 1}, type);
    const auto changed =
        foldBinary(expr->op == TokenKind::plusPlus ? TokenKind::plus : TokenKind::minus, type,
                   {type, old->front()}, *one);
    if (!changed) {
        return std::nullopt;
    }
    (*target->cell)[target->offset] = changed->bits;
    return expr->after ? *old : Value{changed->bits};
}

// --- functions

bool Sema::Evaluator::bind(Frame& frame, const tree::Variable& parameter,
                           const tree::Expr* argument) {
    if (parameter.isReference) {
        const auto target = place(argument);
        if (target) {
            frame.variables[&parameter] = *target;
        }
        return target.has_value();
    }
    auto copy = value(argument);
    if (copy) {
        frame.variables[&parameter] = hold(std::move(*copy));
    }
    return copy.has_value();
}

std::optional<Sema::Evaluator::Value> Sema::Evaluator::call(const tree::Expr* expr) {
    const auto& function = *expr->function;
    if (function.body == nullptr || function.returnsReference) {
        return std::nullopt;
    }
    Frame frame;
    if (function.self != nullptr && expr->a != nullptr && !bind(frame, *function.self, expr->a)) {
        return std::nullopt;
    }
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        if (!bind(frame, *function.parameters[i], expr->items[i])) {
            return std::nullopt;
        }
    }
    Frame* const caller = frame_;
    frame_ = &frame;
    const Flow flow = run(function.body);
    frame_ = caller;
    if (flow == Flow::fails) {
        return std::nullopt;
    }
    if (function.constructor) {
        const auto self = frame.variables.find(function.self);
        return self == frame.variables.end() ? std::nullopt : std::optional(*self->second.cell);
    }
    return function.result->isVoid() || flow == Flow::returns ? std::optional(frame.result)
                                                              : std::nullopt;
}

bool Sema::Evaluator::truth(const tree::Expr* expr, bool& result) {
    const auto known = value(expr);
    if (known && known->size() == 1) {
        result = known->front() != 0;
        return true;
    }
    return false;
}

Sema::Evaluator::Flow Sema::Evaluator::run(const tree::Stmt* stmt) {
    const DepthGuard guard(sema_.depth_);
    return spend() && sema_.depth_ <= kMaxLoweringDepth ? runAtDepth(stmt) : Flow::fails;
}

Sema::Evaluator::Flow Sema::Evaluator::runAll(std::span<tree::Stmt* const> list) {
    for (const auto* stmt : list) {
        if (const Flow flow = run(stmt); flow != Flow::next) {
            return flow;
        }
    }
    return Flow::next;
}

Sema::Evaluator::Flow Sema::Evaluator::runAtDepth(const tree::Stmt* stmt) {
    switch (stmt->kind) {
    case StmtKind::expression:
        return value(stmt->expr) ? Flow::next : Flow::fails;
    case StmtKind::declare: {
        const auto& variable = *stmt->variable;
        if (variable.isReference) {
            return bind(*frame_, variable, stmt->expr) ? Flow::next : Flow::fails;
        }
        const size_t count = scalarCount(variable.type);
        if (count > kMaxConstantScalars || !spend(count)) {
            return Flow::fails;
        }
        auto init = stmt->expr != nullptr ? value(stmt->expr) : std::optional(Value(count));
        if (!init) {
            return Flow::fails;
        }
        give(&variable, hold(std::move(*init)));
        return Flow::next;
    }
    case StmtKind::compound:
        return runAll(stmt->items);
    case StmtKind::ifElse: {
        bool test = false;
        if (!truth(stmt->expr, test)) {
            return Flow::fails;
        }
        return test                         ? run(stmt->body)
               : stmt->otherwise != nullptr ? run(stmt->otherwise)
                                            : Flow::next;
    }
    case StmtKind::loop:
        return loop(stmt);
    case StmtKind::multiway:
        return multiway(stmt);
    case StmtKind::leave: {
        auto result = stmt->expr != nullptr ? value(stmt->expr) : std::optional(Value());
        if (!result) {
            return Flow::fails;
        }
        frame_->result = std::move(*result);
        return Flow::returns;
    }
    case StmtKind::breakOut:
        return Flow::breaks;
    case StmtKind::continueLoop:
        return Flow::continues;
    }
    return Flow::fails;
}

Sema::Evaluator::Flow Sema::Evaluator::loop(const tree::Stmt* stmt) {
    if (stmt->init != nullptr && run(stmt->init) != Flow::next) {
        return Flow::fails;
    }
    for (bool first = true;; first = false) {
        bool goesOn = true;
        if (stmt->expr != nullptr && !(first && stmt->testLast) && !truth(stmt->expr, goesOn)) {
            return Flow::fails;
        }
        if (!goesOn) {
            return Flow::next;
        }
        const Flow flow = run(stmt->body);
        if (flow == Flow::breaks) {
            return Flow::next;
        }
        if (flow == Flow::returns || flow == Flow::fails) {
            return flow;
        }
        if (stmt->step != nullptr && !value(stmt->step)) {
            return Flow::fails;
        }
    }
}

Sema::Evaluator::Flow Sema::Evaluator::multiway(const tree::Stmt* stmt) {
    const auto selector = value(stmt->expr);
    if (!selector) {
        return Flow::fails;
    }
    const tree::Case* chosen = nullptr;
    for (const auto& label : stmt->cases) {
        if (!label.isDefault && label.value == static_cast<uint32_t>(selector->front())) {
            chosen = &label;
        }
    }
    for (const auto& label : stmt->cases) {
        chosen = chosen == nullptr && label.isDefault ? &label : chosen;
    }
    const Flow flow =
        chosen == nullptr ? Flow::next : runAll(stmt->items.subspan(chosen->position));
    return flow == Flow::breaks ? Flow::next : flow;
}

} // namespace msl
