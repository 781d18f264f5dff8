#include <algorithm>

#include "msl/sema/sema.h"

namespace msl {

using tree::ExprKind;

// Brings two operands to the types that the operator takes.
bool Sema::binaryOperands(TokenKind op, tree::Expr*& a, tree::Expr*& b, Range range) {
    const auto refuse = [&] {
        error(range, "'" + std::string(spelling(op)) + "' does not apply to '" + toText(a->type) +
                         "' and '" + toText(b->type) + "'");
        return false;
    };
    const bool equality = op == TokenKind::equalEqual || op == TokenKind::exclamationEqual;
    if (equality && a->type->isEnum() && a->type == b->type) {
        a = convertTo(a, a->type->element);
        b = convertTo(b, b->type->element);
    }
    if (a->type->isEnum() && a->type == b->type && a->type->enumeration->scoped &&
        (op == TokenKind::less || op == TokenKind::greater || op == TokenKind::lessEqual ||
         op == TokenKind::greaterEqual)) {
        a = convertTo(a, a->type->element);
        b = convertTo(b, b->type->element);
    }
    a = promote(a);
    b = promote(b);
    if (a->type->isMatrix() || b->type->isMatrix()) {
        const Type* element = floatType();
        if (a->type->isMatrix() && b->type->isMatrix() && a->type->scalar() == b->type->scalar()) {
            element = a->type->scalar();
        }
        const auto toElement = [&](tree::Expr* expr) -> tree::Expr* {
            if (expr->type->isMatrix()) {
                return convertTo(
                    expr, matrixType(element->kind, expr->type->count, expr->type->element->count));
            }
            return expr->type->isArithmetic()
                       ? convertTo(expr, vectorType(element->kind, expr->type->components()))
                       : nullptr;
        };
        tree::Expr* left = toElement(a);
        tree::Expr* right = toElement(b);
        if (left == nullptr || right == nullptr) {
            return refuse();
        }
        const bool scalar = left->type->isScalar() || right->type->isScalar();
        bool fits = false;
        if (op == TokenKind::star) {
            if (scalar) {
                fits = true;
            } else if (left->type->isMatrix() && right->type->isMatrix()) {
                fits = left->type->count == right->type->element->count;
            } else if (left->type->isMatrix()) {
                fits = left->type->count == right->type->count;
            } else {
                fits = left->type->count == right->type->element->count;
            }
        } else if (op == TokenKind::plus || op == TokenKind::minus || equality) {
            fits = left->type == right->type;
        } else if (op == TokenKind::slash) {
            fits = right->type->isScalar();
        }
        if (!fits) {
            return refuse();
        }
        a = left;
        b = right;
        return true;
    }
    if (!a->type->isArithmetic() || !b->type->isArithmetic()) {
        return refuse();
    }
    const bool shift = op == TokenKind::shiftLeft || op == TokenKind::shiftRight;
    const bool aVector = a->type->isVector();
    const bool bVector = b->type->isVector();
    if (aVector && bVector && a->type->count != b->type->count) {
        return refuse();
    }
    const uint32_t count = std::max(a->type->components(), b->type->components());
    const Type* aScalar = a->type->scalar();
    const Type* bScalar = b->type->scalar();
    const Type* common = nullptr;
    if (shift) {
        a = convertTo(a, vectorType(aScalar->kind, count));
        b = convertTo(b, vectorType(aScalar->kind, count));
        common = aScalar;
    } else {
        if (aVector == bVector) {
            common = aVector && aScalar == bScalar ? aScalar : commonScalar(aScalar, bScalar);
        } else {
            // A scalar takes the vector's component type; it must not lose its fraction.
            common = aVector ? aScalar : bScalar;
            const Type* scalar = aVector ? bScalar : aScalar;
            if (scalar->isFloating() && !common->isFloating()) {
                error(range, "'" + std::string(spelling(op)) + "' of '" + toText(a->type) +
                                 "' and '" + toText(b->type) +
                                 "' would lose the fraction; convert one of them");
                return false;
            }
        }
        a = convertTo(a, vectorType(common->kind, count));
        b = convertTo(b, vectorType(common->kind, count));
    }
    const bool integerOnly = shift || op == TokenKind::percent || op == TokenKind::ampersand ||
                             op == TokenKind::pipe || op == TokenKind::caret;
    if (integerOnly && common->isFloating()) {
        if (op == TokenKind::percent) {
            error(range, "'%' does not apply to '" + toText(a->type) + "'; 'fmod' does");
            return false;
        }
        return refuse();
    }
    return true;
}

tree::Expr* Sema::makeBinary(TokenKind op, tree::Expr* a, tree::Expr* b, Range range) {
    const Type* type = unpacked(a->type);
    switch (op) {
    case TokenKind::equalEqual:
    case TokenKind::exclamationEqual:
    case TokenKind::less:
    case TokenKind::greater:
    case TokenKind::lessEqual:
    case TokenKind::greaterEqual:
        type = a->type->isMatrix() ? boolType()
                                   : vectorType(TypeKind::boolType, a->type->components());
        break;
    case TokenKind::star:
        if (a->type->isMatrix() && b->type->isMatrix()) {
            type = matrixType(a->type->scalar()->kind, b->type->count, a->type->element->count);
        } else if (a->type->isMatrix() && b->type->isVector()) {
            type = a->type->element;
        } else if (a->type->isVector() && b->type->isMatrix()) {
            type = vectorType(b->type->scalar()->kind, b->type->count);
        } else if (b->type->isMatrix()) {
            type = b->type;
        }
        break;
    default:
        break;
    }
    tree::Expr* result = makeExpr(ExprKind::binary, type, range);
    result->op = op;
    result->a = a;
    result->b = b;
    return finish(result);
}

tree::Expr* Sema::operatorCall(std::string_view name, std::vector<tree::Expr*> operands,
                               Range range, bool& found) {
    const Name interned = names_.intern(name);
    found = false;
    const Type* self = operands[0]->type;
    std::vector<tree::Expr*> rest(operands.begin() + 1, operands.end());
    const Member* method = nullptr;
    if (self->isStruct()) {
        const Type* owner = nullptr;
        if ((method = findMethod(self, interned, owner)) != nullptr) {
            found = true;
            if (tree::Expr* result = callOverloads(method->overloads, asBase(operands[0], owner),
                                                   rest, nullptr, range, true)) {
                return result;
            }
        }
    }
    // A free operator, visible here or beside one of the operands' structs.
    std::vector<const Symbol*> symbols{lookup(interned)};
    for (const auto* operand : operands) {
        const auto* record = recordOf(operand->type);
        for (const Space* space = record == nullptr ? nullptr : record->space->parent;
             space != nullptr; space = space->parent) {
            symbols.push_back(lookupIn(interned, space));
        }
    }
    const Symbol* last = nullptr;
    for (const auto* symbol : symbols) {
        if (symbol == nullptr || symbol->kind != SymbolKind::functions) {
            continue;
        }
        last = symbol;
        found = true;
        if (tree::Expr* result =
                callOverloads(symbol->overloads, nullptr, operands, nullptr, range, true)) {
            return result;
        }
    }
    const bool builtIn = std::none_of(operands.begin(), operands.end(), [](const auto* operand) {
        return operand->type->isStruct();
    });
    if (builtIn) {
        found = false; // enumerations have operators of their own where none of these fits
        return nullptr;
    }
    if (last != nullptr && operands.size() > 1 &&
        (userArithmetic(operands[0]->type) || userArithmetic(operands[1]->type))) {
        found = false; // the operands' conversions may lead to a built-in operator
        return nullptr;
    }
    if (last != nullptr) {
        reportNoOverload(last->overloads, operands, range, false);
    } else if (method != nullptr) {
        reportNoOverload(method->overloads, rest, range, false);
    }
    return nullptr;
}

tree::Expr* Sema::binary(const ast::Expr* expr) {
    tree::Expr* a = value(expr->a);
    tree::Expr* b = value(expr->b);
    if (a == nullptr || b == nullptr) {
        return nullptr;
    }
    if (expr->kind == ast::ExprKind::logical) {
        if (!a->type->isArithmetic() || !b->type->isArithmetic() ||
            (a->type->isVector() && b->type->isVector() && a->type->count != b->type->count)) {
            error(expr->range, "'" + std::string(spelling(expr->op)) + "' does not apply to '" +
                                   toText(a->type) + "' and '" + toText(b->type) + "'");
            return nullptr;
        }
        const uint32_t count = std::max(a->type->components(), b->type->components());
        a = convertTo(a, vectorType(TypeKind::boolType, count));
        b = convertTo(b, vectorType(TypeKind::boolType, count));
        if (count > 1) {
            return makeBinary(expr->op == TokenKind::ampersandAmpersand ? TokenKind::ampersand
                                                                        : TokenKind::pipe,
                              a, b, expr->range);
        }
        tree::Expr* result = makeExpr(ExprKind::logical, boolType(), expr->range);
        result->op = expr->op;
        result->a = a;
        result->b = b;
        return finish(result);
    }
    if (a->type->isStruct() || b->type->isStruct() || a->type->isEnum() || b->type->isEnum()) {
        bool found = false;
        tree::Expr* result =
            operatorCall("operator" + std::string(spelling(expr->op)), {a, b}, expr->range, found);
        if (found) {
            return result;
        }
        a = decayed(a);
        b = decayed(b);
    }
    if (a->type->isPointer() || b->type->isPointer() || a->type->isArray()) {
        const bool plus = expr->op == TokenKind::plus || expr->op == TokenKind::minus;
        if (plus && (a->type->isPointer() || a->type->isArray()) && b->type->isInteger()) {
            const Type* pointer = a->type->isPointer()
                                      ? a->type
                                      : types_.pointer(a->type->element, a->space, a->isConst);
            tree::Expr* offset = convertTo(b, intType());
            if (expr->op == TokenKind::minus) {
                tree::Expr* negated = makeExpr(ExprKind::unary, intType(), expr->range);
                negated->op = TokenKind::minus;
                negated->a = offset;
                offset = finish(negated);
            }
            tree::Expr* element = makeExpr(ExprKind::index, pointer->element, expr->range);
            element->a = a;
            element->b = offset;
            element->lvalue = true;
            element->isConst = pointer->constPointee;
            element->space = pointer->space;
            finish(element);
            if (a->type->isArray()) {
                noteAssigned(a);
            }
            tree::Expr* result = makeExpr(ExprKind::addressOf, pointer, expr->range);
            result->a = element;
            return finish(result);
        }
    }
    if (!binaryOperands(expr->op, a, b, expr->range)) {
        return nullptr;
    }
    return makeBinary(expr->op, a, b, expr->range);
}

// An assignment that the struct defines itself; nothing where it does not, or not for this value.
tree::Expr* Sema::assignmentCall(tree::Expr* target, const ast::Expr* expr) {
    const Type* owner = nullptr;
    const auto* method = target->type->isStruct() && expr->b->kind != ast::ExprKind::list
                             ? findMethod(target->type, names_.intern("operator="), owner)
                             : nullptr;
    if (method == nullptr) {
        return nullptr;
    }
    tree::Expr* source = value(expr->b);
    if (source == nullptr) {
        return nullptr;
    }
    std::vector<tree::Expr*> arguments{source};
    tree::Expr* result = callOverloads(method->overloads, asBase(target, owner), arguments, nullptr,
                                       expr->range, true);
    if (result == nullptr) {
        pending_.emplace(expr->b, source);
    }
    return result;
}

tree::Expr* Sema::assign(const ast::Expr* expr) {
    tree::Expr* target = value(expr->a);
    if (target == nullptr) {
        return nullptr;
    }
    if (expr->op == TokenKind::equal) {
        if (target->type->isStruct() && !target->lvalue) {
            writable(target, expr->range);
            return nullptr;
        }
        if (tree::Expr* called = assignmentCall(target, expr)) {
            return called;
        }
        tree::Expr* source = initialise(target->type, expr->b, ast::InitKind::equal);
        if (source == nullptr || !writable(target, expr->range)) {
            return nullptr;
        }
        tree::Expr* result = makeExpr(ExprKind::assign, target->type, expr->range);
        result->a = target;
        result->b = source;
        result->lvalue = true;
        result->space = target->space;
        return finish(result);
    }
    tree::Expr* source = value(expr->b);
    if (source == nullptr) {
        return nullptr;
    }
    const auto text = spelling(expr->op);
    if (target->type->isStruct() || target->type->isEnum()) {
        bool found = false;
        tree::Expr* result =
            operatorCall("operator" + std::string(text), {target, source}, expr->range, found);
        if (found) {
            return result;
        }
    }
    if (!writable(target, expr->range)) {
        return nullptr;
    }
    TokenKind op = TokenKind::unknown;
    switch (expr->op) {
    case TokenKind::plusEqual:
        op = TokenKind::plus;
        break;
    case TokenKind::minusEqual:
        op = TokenKind::minus;
        break;
    case TokenKind::starEqual:
        op = TokenKind::star;
        break;
    case TokenKind::slashEqual:
        op = TokenKind::slash;
        break;
    case TokenKind::percentEqual:
        op = TokenKind::percent;
        break;
    case TokenKind::ampersandEqual:
        op = TokenKind::ampersand;
        break;
    case TokenKind::pipeEqual:
        op = TokenKind::pipe;
        break;
    case TokenKind::caretEqual:
        op = TokenKind::caret;
        break;
    case TokenKind::shiftLeftEqual:
        op = TokenKind::shiftLeft;
        break;
    default:
        op = TokenKind::shiftRight;
        break;
    }
    if (target->type->isPointer() && (op == TokenKind::plus || op == TokenKind::minus)) {
        source = convert(source, intType(), expr->b->range, "the number of elements");
        return source == nullptr ? nullptr : pointerStep(target, source, op, false, expr->range);
    }
    // The operation runs on a copy of the target, so that the target itself is found only once.
    tree::Expr* left = arena_.make<tree::Expr>(*target);
    tree::Expr* right = source;
    if (!binaryOperands(op, left, right, expr->range)) {
        return nullptr;
    }
    const Type* computed = makeBinary(op, left, right, expr->range)->type;
    if (rank(computed, target->type) == Rank::none) {
        error(expr->range, "'" + std::string(text) + "' gives '" + toText(computed) +
                               "', which does not convert to '" + toText(target->type) + "'");
        return nullptr;
    }
    tree::Expr* carrier = makeExpr(ExprKind::zero, unpacked(left->type), expr->range);
    tree::Expr* result = makeExpr(ExprKind::compound, target->type, expr->range);
    result->op = op;
    result->a = target;
    result->b = right;
    result->c = finish(carrier);
    result->lvalue = true;
    result->space = target->space;
    return finish(result);
}

tree::Expr* Sema::conditional(const ast::Expr* expr) {
    tree::Expr* test = value(expr->a);
    tree::Expr* a = expression(expr->b);
    tree::Expr* b = expression(expr->c);
    if (test == nullptr || a == nullptr || b == nullptr) {
        return nullptr;
    }
    if (!test->type->isArithmetic() && !test->type->isEnum()) {
        error(test->range, "a condition is a number or bool, not '" + toText(test->type) + "'");
        return nullptr;
    }
    if (a->type->isArray() && b->type->isArray() && a->type->element == b->type->element &&
        a->space == b->space && a->lvalue && b->lvalue) {
        // Arrays are chosen by the addresses of their first elements.
        const Type* pointer = types_.pointer(a->type->element, a->space, a->isConst || b->isConst);
        noteAssigned(a);
        noteAssigned(b);
        a = convertTo(a, pointer);
        b = convertTo(b, pointer);
    }
    const Type* type = nullptr;
    if (unpacked(a->type) == unpacked(b->type)) {
        type = unpacked(a->type);
    } else if (a->type->isArithmetic() && b->type->isArithmetic()) {
        const uint32_t count = std::max(a->type->components(), b->type->components());
        if ((a->type->isVector() && a->type->count != count) ||
            (b->type->isVector() && b->type->count != count)) {
            error(expr->range, "the choices '" + toText(a->type) + "' and '" + toText(b->type) +
                                   "' have no common type");
            return nullptr;
        }
        const Type* common = nullptr;
        if (a->type->isVector() != b->type->isVector()) {
            common = a->type->isVector() ? a->type->scalar() : b->type->scalar();
        } else {
            common = commonScalar(a->type->scalar(), b->type->scalar());
        }
        type = vectorType(common->kind, count);
    } else if (rank(b->type, a->type) != Rank::none) {
        type = a->type;
    } else if (rank(a->type, b->type) != Rank::none) {
        type = b->type;
    } else {
        error(expr->range, "the choices '" + toText(a->type) + "' and '" + toText(b->type) +
                               "' have no common type");
        return nullptr;
    }
    if (test->type->isVector()) {
        const uint32_t count = test->type->count;
        if (!type->isArithmetic() || (type->isVector() && type->count != count)) {
            error(expr->range, "a condition of " + std::to_string(count) +
                                   " components does not choose between values of '" +
                                   toText(type) + "'");
            return nullptr;
        }
        type = vectorType(type->scalar()->kind, count);
        tree::Expr* result = makeExpr(ExprKind::select, type, expr->range);
        result->a = convertTo(test, vectorType(TypeKind::boolType, count));
        result->b = convertTo(a, type);
        result->c = convertTo(b, type);
        return finish(result);
    }
    tree::Expr* result = makeExpr(ExprKind::conditional, type, expr->range);
    result->a = convertTo(test, boolType());
    result->b = convertTo(a, type);
    result->c = convertTo(b, type);
    return finish(result);
}

} // namespace msl
