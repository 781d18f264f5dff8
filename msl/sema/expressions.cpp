#include <algorithm>
#include <bit>

#include "msl/sema/depth.h"
#include "msl/sema/sema.h"

namespace msl {

using tree::ExprKind;

tree::Expr* Sema::makeExpr(ExprKind kind, const Type* type, Range range) {
    auto* expr = arena_.make<tree::Expr>();
    expr->kind = kind;
    expr->type = type;
    expr->range = range;
    return expr;
}

// Sums up what the parts say of cost and effects.
tree::Expr* Sema::finish(tree::Expr* expr) {
    uint32_t cost = 1;
    bool simple = true;
    const auto add = [&](const tree::Expr* part) {
        if (part != nullptr) {
            cost += part->cost;
            simple = simple && part->simple;
        }
    };
    add(expr->a);
    add(expr->b);
    add(expr->c);
    for (const auto* item : expr->items) {
        add(item);
    }
    switch (expr->kind) {
    case ExprKind::assign:
    case ExprKind::compound:
    case ExprKind::step:
    case ExprKind::pointerStep:
    case ExprKind::call:
        simple = false;
        break;
    case ExprKind::library:
        simple = simple && expr->library->lowering != Lowering::special;
        cost += 2;
        break;
    case ExprKind::index:
        // Reading beyond an array's end must not happen where the source does not read.
        simple = simple && expr->b->kind == ExprKind::constant;
        break;
    case ExprKind::binary:
        simple = simple && !(expr->type->isInteger() &&
                             (expr->op == TokenKind::slash || expr->op == TokenKind::percent));
        break;
    case ExprKind::deref:
        simple = false;
        break;
    default:
        break;
    }
    expr->simple = simple;
    expr->cost = static_cast<uint16_t>(std::min(cost, 60000U));
    return expr;
}

tree::Expr* Sema::constantExpr(const Type* type, uint64_t bits, Range range) {
    tree::Expr* expr = makeExpr(ExprKind::constant, type, range);
    expr->bits = bits;
    return finish(expr);
}

tree::Expr* Sema::variableExpr(tree::Variable* variable, Range range) {
    tree::Expr* expr = makeExpr(ExprKind::variable, variable->type, range);
    expr->variable = variable;
    expr->lvalue = true;
    expr->isConst = variable->isConst;
    expr->space = variable->space;
    return finish(expr);
}

tree::Expr* Sema::fieldExpr(tree::Expr* base, uint32_t index, Range range) {
    tree::Expr* expr = makeExpr(ExprKind::field, base->type->structure->fields[index].type, range);
    expr->a = base;
    expr->index = index;
    expr->lvalue = base->lvalue;
    expr->isConst = base->isConst;
    expr->space = base->space;
    return finish(expr);
}

tree::Expr* Sema::derefExpr(tree::Expr* pointer, Range range) {
    tree::Expr* expr = makeExpr(ExprKind::deref, pointer->type->element, range);
    expr->a = pointer;
    expr->lvalue = true;
    expr->isConst = pointer->type->constPointee;
    expr->space = pointer->type->space;
    return finish(expr);
}

// A member as the source names it; a reference stands for what it refers to.
tree::Expr* Sema::memberOf(tree::Expr* base, uint32_t index, Range range) {
    tree::Expr* expr = fieldExpr(base, index, range);
    return base->type->structure->fields[index].isReference ? derefExpr(expr, range) : expr;
}

tree::Expr* Sema::value(const ast::Expr* expr) {
    if (!pending_.empty()) {
        if (const auto known = pending_.find(expr); known != pending_.end()) {
            tree::Expr* result = known->second;
            pending_.erase(known);
            return result;
        }
    }
    tree::Expr* result = expression(expr);
    if (result != nullptr && result->type->isVoid()) {
        error(expr->range, "this has no value");
        return nullptr;
    }
    return result;
}

tree::Expr* Sema::expression(const ast::Expr* expr) {
    const DepthGuard guard(depth_);
    return tooDeep(expr->range) || diagnostics_.exhausted() ? nullptr : expressionAtDepth(expr);
}

tree::Expr* Sema::expressionAtDepth(const ast::Expr* expr) {
    using enum ast::ExprKind;
    switch (expr->kind) {
    case intLiteral:
        return constantExpr(expr->literalType, expr->intValue, expr->range);
    case floatLiteral:
        return constantExpr(
            expr->literalType,
            std::bit_cast<uint64_t>(static_cast<double>(static_cast<float>(expr->floatValue))),
            expr->range);
    case boolLiteral:
        return constantExpr(boolType(), expr->intValue, expr->range);
    case nullLiteral:
        error(expr->range, "null pointers are not supported");
        return nullptr;
    case name:
        return nameExpression(expr);
    case call:
        return Sema::call(expr);
    case construct: {
        if (expr->type->kind == ast::TypeSyntaxKind::automatic) {
            error(expr->range, "'auto' has no meaning here");
            return nullptr;
        }
        const Type* type = resolve(expr->type);
        if (type == nullptr) {
            return nullptr;
        }
        if (type->isVoid() || type->isResource() || type->isReference()) {
            error(expr->range, "a value of the type '" + toText(type) + "' cannot be made");
            return nullptr;
        }
        if (expr->items.empty()) {
            return defaultValue(type, expr->range);
        }
        tree::Expr* made =
            fromList(type, expr->items, expr->designators, expr->range, expr->braces);
        return made;
    }
    case cast: {
        const Type* type = resolve(expr->type);
        tree::Expr* operand = type == nullptr ? nullptr : expression(expr->a);
        return operand == nullptr ? nullptr : explicitConvert(operand, type, expr->range);
    }
    case bitCast: {
        const Type* type = resolve(expr->type);
        tree::Expr* operand = type == nullptr ? nullptr : value(expr->a);
        if (operand == nullptr) {
            return nullptr;
        }
        if (!type->isArithmetic() || !operand->type->isArithmetic() || type->scalar()->isBool() ||
            operand->type->scalar()->isBool() || type->size != operand->type->size) {
            error(expr->range, "'as_type' takes a scalar or vector of the same size; '" +
                                   toText(operand->type) + "' is not as large as '" + toText(type) +
                                   "'");
            return nullptr;
        }
        const bool small = type->scalar()->size < 4 || operand->type->scalar()->size < 4;
        if (small && (type->scalar()->size == 8 || operand->type->scalar()->size == 8)) {
            error(expr->range, "'as_type' between '" + toText(operand->type) + "' and '" +
                                   toText(type) + "' is not supported");
            return nullptr;
        }
        tree::Expr* result = makeExpr(ExprKind::bitCast, unpacked(type), expr->range);
        result->a = operand;
        return finish(result);
    }
    case ast::ExprKind::unary:
        return Sema::unary(expr);
    case postfix:
        return stepExpression(expr, true);
    case ast::ExprKind::binary:
    case logical:
        return Sema::binary(expr);
    case ast::ExprKind::assign:
        return Sema::assign(expr);
    case ast::ExprKind::conditional:
        return Sema::conditional(expr);
    case comma: {
        tree::Expr* left = expression(expr->a);
        tree::Expr* right = expression(expr->b);
        if (left == nullptr || right == nullptr) {
            return nullptr;
        }
        tree::Expr* result = makeExpr(ExprKind::comma, right->type, expr->range);
        result->a = left;
        result->b = right;
        return finish(result);
    }
    case member:
        return memberExpression(expr);
    case index:
        return indexExpression(expr);
    case list:
        error(expr->range, "a list in braces is no value by itself");
        return nullptr;
    case sizeOf:
    case alignOf: {
        const Type* type = nullptr;
        if (expr->type != nullptr) {
            type = resolve(expr->type);
        } else if (const auto* operand = value(expr->a)) {
            type = operand->type;
        }
        if (type == nullptr) {
            return nullptr;
        }
        return constantExpr(scalarType(TypeKind::ulongType),
                            expr->kind == sizeOf ? type->size : type->alignment, expr->range);
    }
    case ast::ExprKind::packElement:
        return Sema::packElement(expr);
    case ast::ExprKind::sizeOfPack:
        return Sema::sizeOfPack(expr);
    case packExpansion:
        error(expr->range, "a parameter pack is expanded among arguments or in braces");
        return nullptr;
    case thisObject: {
        if (state_ == nullptr || state_->function->self == nullptr) {
            error(expr->range, "'this' has no meaning outside a member function");
            return nullptr;
        }
        tree::Expr* self = variableExpr(state_->function->self, expr->range);
        tree::Expr* result =
            makeExpr(ExprKind::addressOf, types_.pointer(self->type, self->space, self->isConst),
                     expr->range);
        result->a = self;
        return finish(result);
    }
    }
    return nullptr;
}

tree::Expr* Sema::nameExpression(const ast::Expr* expr) {
    const auto& name = *expr->name;
    const uint32_t before = diagnostics_.errorCount();
    Symbol* symbol = lookup(name);
    if (symbol == nullptr && diagnostics_.errorCount() != before) {
        return nullptr;
    }
    if (symbol != nullptr && symbol->kind == SymbolKind::pattern && name.hasArguments &&
        symbol->pattern->primary->kind == ast::DeclKind::variables) {
        symbol = instantiateVariable(*symbol->pattern, name);
        if (symbol == nullptr) {
            return nullptr;
        }
    }
    const bool local = symbol != nullptr && symbol->space == nullptr;
    if (!local && name.spaces.empty() && name.owner == nullptr && state_ != nullptr &&
        state_->function->self != nullptr) {
        if (tree::Expr* member = findField(variableExpr(state_->function->self, expr->range),
                                           name.name, expr->range)) {
            return member;
        }
    }
    if (symbol == nullptr) {
        if (name.name->text == "__builtin_inff" || name.name->text == "__builtin_nanf") {
            const double number =
                name.name->text == "__builtin_inff" ? __builtin_inf() : __builtin_nan("");
            return constantExpr(floatType(), std::bit_cast<uint64_t>(number), expr->range);
        }
        if (!findLibraryFunctions(name.name).empty()) {
            error(expr->range, "'" + std::string(name.name->text) + "' is a function; call it");
            return nullptr;
        }
        reportUnknown(name, "variable");
        return nullptr;
    }
    if (symbol->isPack) {
        error(expr->range, "'" + std::string(name.name->text) +
                               "' is a parameter pack; '...' behind it expands it");
        return nullptr;
    }
    switch (symbol->kind) {
    case SymbolKind::variable:
        if (symbol->variable == nullptr) {
            // Its declaration was wrong and has been reported, or has not come to its end.
            if (!diagnostics_.hasErrors()) {
                error(expr->range,
                      "'" + std::string(name.name->text) + "' stands in its own value");
            }
            return nullptr;
        }
        symbol->variable->isUsed = true;
        return variableExpr(symbol->variable, expr->range);
    case SymbolKind::enumerator:
    case SymbolKind::value:
        return constantExpr(symbol->type, symbol->value, expr->range);
    case SymbolKind::functions:
        error(expr->range, "'" + std::string(name.name->text) + "' is a function; call it");
        return nullptr;
    default:
        error(expr->range, "'" + std::string(name.name->text) + "' is not a value");
        return nullptr;
    }
}

tree::Expr* Sema::memberExpression(const ast::Expr* expr) {
    tree::Expr* base = value(expr->a);
    if (base == nullptr) {
        return nullptr;
    }
    if (expr->op == TokenKind::arrow) {
        if (!base->type->isPointer()) {
            error(expr->range, "'->' needs a pointer, not '" + toText(base->type) + "'");
            return nullptr;
        }
        base = derefExpr(base, expr->range);
    }
    const Name name = expr->name->name;
    if (base->type->isVector()) {
        return swizzle(base, expr);
    }
    if (base->type->isMatrix() && name->text == "columns") {
        return base; // what an index of it picks is a column
    }
    if (base->type->isStruct()) {
        if (tree::Expr* member = findField(base, name, expr->range)) {
            return member;
        }
        const uint32_t before = diagnostics_.errorCount();
        error(expr->range,
              "'" + toText(base->type) + "' has no member '" + std::string(name->text) + "'");
        if (diagnostics_.errorCount() > before) {
            std::vector<std::string_view> known;
            for (const auto& field : base->type->structure->fields) {
                known.push_back(field.name != nullptr ? field.name->text : std::string_view());
            }
            suggest(known, name->text, expr->range);
        }
        return nullptr;
    }
    if (base->type->isPointer()) {
        error(expr->range, "'" + toText(base->type) + "' is a pointer; its members follow '->'");
        return nullptr;
    }
    error(expr->range, "'" + toText(base->type) + "' has no members");
    return nullptr;
}

tree::Expr* Sema::swizzle(tree::Expr* base, const ast::Expr* expr) {
    const auto text = expr->name->name->text;
    const Type* type = base->type;
    tree::Expr* result = makeExpr(ExprKind::swizzle, nullptr, expr->range);
    bool repeated = false;
    bool good = text.size() >= 1 && text.size() <= 4;
    const std::string_view set =
        good && std::string_view("rgba").find(text[0]) != std::string_view::npos ? "rgba" : "xyzw";
    for (size_t i = 0; good && i < text.size(); ++i) {
        const auto component = set.find(text[i]);
        good = component != std::string_view::npos && component < type->count;
        if (good) {
            for (size_t j = 0; j < i; ++j) {
                repeated = repeated || result->components[j] == component;
            }
            result->components[i] = static_cast<uint8_t>(component);
        }
    }
    if (!good) {
        error(expr->range, "'" + toText(type) + "' has no component '" + std::string(text) + "'");
        return nullptr;
    }
    result->componentCount = static_cast<uint8_t>(text.size());
    result->type = vectorType(type->element->kind, result->componentCount);
    result->a = base;
    result->lvalue = base->lvalue && !repeated;
    result->isConst = base->isConst;
    result->space = base->space;
    return finish(result);
}

tree::Expr* Sema::indexExpression(const ast::Expr* expr) {
    tree::Expr* base = value(expr->a);
    tree::Expr* position = value(expr->b);
    if (base == nullptr || position == nullptr) {
        return nullptr;
    }
    if (base->type->isStruct()) {
        bool found = false;
        tree::Expr* result = operatorCall("operator[]", {base, position}, expr->range, found);
        if (found) {
            return result;
        }
    }
    const Type* type = base->type;
    if (!type->isArray() && !type->isVector() && !type->isMatrix() && !type->isPointer()) {
        error(expr->range, "'" + toText(type) + "' cannot be indexed");
        return nullptr;
    }
    if (!position->type->isInteger() && !position->type->isEnum()) {
        error(position->range, "an index is an integer, not '" + toText(position->type) + "'");
        return nullptr;
    }
    position = promote(position);
    if (position->type->size == 8) {
        position = convertTo(position, intType());
    }
    constantSteps_ = 0;
    const uint32_t length = type->isArray() ? type->length : type->count;
    if (const auto known = evaluate(position)) {
        const auto at = static_cast<int64_t>(known->bits);
        if (!type->isPointer() && length != 0 && (at < 0 || at >= length)) {
            error(position->range,
                  "the index " + std::to_string(at) + " is outside '" + toText(type) + "'");
            return nullptr;
        }
        position = constantExpr(position->type, known->bits, position->range);
    }
    tree::Expr* result = makeExpr(ExprKind::index, type->element, expr->range);
    result->a = base;
    result->b = position;
    result->lvalue = type->isPointer() || base->lvalue;
    result->isConst = type->isPointer() ? type->constPointee : base->isConst;
    result->space = type->isPointer() ? type->space : base->space;
    return finish(result);
}

tree::Expr* Sema::unary(const ast::Expr* expr) {
    if (expr->op == TokenKind::plusPlus || expr->op == TokenKind::minusMinus) {
        return stepExpression(expr, false);
    }
    tree::Expr* operand = value(expr->a);
    if (operand == nullptr) {
        return nullptr;
    }
    if ((operand->type->isStruct() || operand->type->isEnum()) &&
        expr->op != TokenKind::ampersand) {
        bool found = false;
        tree::Expr* result = operatorCall("operator" + std::string(spelling(expr->op)), {operand},
                                          expr->range, found);
        if (found) {
            return result;
        }
    }
    const auto refuse = [&]() -> tree::Expr* {
        error(expr->range, "'" + std::string(spelling(expr->op)) + "' does not apply to '" +
                               toText(operand->type) + "'");
        return nullptr;
    };
    switch (expr->op) {
    case TokenKind::ampersand: {
        if (!operand->lvalue || operand->kind == ExprKind::swizzle) {
            error(expr->range, "only what is stored has an address");
            return nullptr;
        }
        noteAssigned(operand);
        tree::Expr* result =
            makeExpr(ExprKind::addressOf,
                     types_.pointer(operand->type, operand->space, operand->isConst), expr->range);
        result->a = operand;
        return finish(result);
    }
    case TokenKind::star: {
        if (!operand->type->isPointer()) {
            return refuse();
        }
        return derefExpr(operand, expr->range);
    }
    case TokenKind::exclamation: {
        if (!operand->type->isArithmetic()) {
            return refuse();
        }
        operand = convertTo(operand, vectorType(TypeKind::boolType, operand->type->components()));
        break;
    }
    case TokenKind::tilde:
        operand = promote(operand);
        if (!operand->type->isArithmetic() || operand->type->scalar()->isFloating()) {
            return refuse();
        }
        break;
    default:
        operand = promote(operand);
        if (!operand->type->isArithmetic() && !operand->type->isMatrix()) {
            return refuse();
        }
        if (expr->op == TokenKind::plus) {
            tree::Expr* same = makeExpr(ExprKind::convert, operand->type, expr->range);
            same->a = operand;
            return finish(same);
        }
        break;
    }
    operand->type = unpacked(operand->type);
    tree::Expr* result = makeExpr(ExprKind::unary, unpacked(operand->type), expr->range);
    result->op = expr->op;
    result->a = operand;
    finish(result);
    if (operand->kind == ExprKind::constant) {
        constantSteps_ = 0;
        if (const auto known = evaluate(result)) {
            return constantExpr(result->type, known->bits, expr->range);
        }
    }
    return result;
}

bool Sema::writable(const tree::Expr* expr, Range range) {
    if (!expr->lvalue) {
        error(range, expr->kind == ExprKind::swizzle
                         ? "a swizzle that repeats a component cannot be written"
                         : "this value cannot be written");
        return false;
    }
    if (expr->isConst) {
        const tree::Expr* root = expr;
        while (root->a != nullptr && root->kind != ExprKind::variable) {
            root = root->a;
        }
        error(range, root->kind == ExprKind::variable && root->variable->name != nullptr
                         ? "'" + std::string(root->variable->name->text) +
                               "' is constant and cannot be written"
                         : "a constant cannot be written");
        return false;
    }
    noteAssigned(expr);
    return true;
}

tree::Expr* Sema::stepExpression(const ast::Expr* expr, bool after) {
    tree::Expr* operand = value(expr->a);
    if (operand == nullptr) {
        return nullptr;
    }
    if (operand->type->isStruct()) {
        // The operator behind its operand takes an int that says so.
        std::vector<tree::Expr*> operands{operand};
        if (after) {
            operands.push_back(constantExpr(intType(), 0, expr->range));
        }
        bool found = false;
        tree::Expr* result = operatorCall("operator" + std::string(spelling(expr->op)), operands,
                                          expr->range, found);
        if (found) {
            return result;
        }
    }
    if (!writable(operand, expr->range)) {
        return nullptr;
    }
    if (operand->type->isPointer()) {
        return pointerStep(operand, constantExpr(intType(), 1, expr->range),
                           expr->op == TokenKind::plusPlus ? TokenKind::plus : TokenKind::minus,
                           after, expr->range);
    }
    if (!operand->type->isArithmetic() || operand->type->scalar()->isBool()) {
        error(expr->range, "'" + std::string(spelling(expr->op)) + "' does not apply to '" +
                               toText(operand->type) + "'");
        return nullptr;
    }
    tree::Expr* result = makeExpr(ExprKind::step, unpacked(operand->type), expr->range);
    result->op = expr->op;
    result->a = operand;
    result->after = after;
    return finish(result);
}

// p += n, and p++ with `after`. The pointer must be a variable: lowering keeps how far it has gone.
tree::Expr* Sema::pointerStep(tree::Expr* pointer, tree::Expr* count, TokenKind op, bool after,
                              Range range) {
    if (pointer->kind != ExprKind::variable) {
        error(range, "only a pointer that is a variable can be moved");
        return nullptr;
    }
    pointer->variable->isMoved = true;
    tree::Expr* result = makeExpr(ExprKind::pointerStep, pointer->type, range);
    result->op = op;
    result->a = pointer;
    result->b = count;
    result->after = after;
    return finish(result);
}

} // namespace msl
