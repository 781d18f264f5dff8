// Calls of the library's functions, whose overloads one table describes.
#include "msl/sema/sema.h"

namespace msl {

using tree::ExprKind;

const Type* Sema::parameterType(char letter, const Type* generic) const {
    const auto shaped = [&](TypeKind kind) { return vectorType(kind, generic->components()); };
    switch (letter) {
    case 'T':
    case 'R':
    case 'M':
        return generic;
    case 'S':
    case 'D':
        return generic->scalar();
    case 'B':
        return shaped(TypeKind::boolType);
    case 'I':
    case 'J':
        return shaped(TypeKind::intType);
    case 'U':
        switch (generic->scalar()->size) {
        case 1:
            return shaped(TypeKind::ucharType);
        case 2:
            return shaped(TypeKind::ushortType);
        case 8:
            return shaped(TypeKind::ulongType);
        default:
            return shaped(TypeKind::uintType);
        }
    case 'x':
        return matrixType(generic->scalar()->kind, generic->element->count, generic->count);
    case 'f':
        return floatType();
    case 'u':
        return uintType();
    case 'b':
        return boolType();
    case '2':
        return vectorType(TypeKind::floatType, 2);
    case '4':
        return vectorType(TypeKind::floatType, 4);
    case 'p':
        return vectorType(TypeKind::halfType, 2);
    case 'q':
        return vectorType(TypeKind::halfType, 4);
    default:
        return voidType();
    }
}

// What T stands for in a call with these arguments; nothing where it cannot stand for anything.
const Type* Sema::deduce(const LibraryFunction& function, const std::vector<tree::Expr*>& arguments,
                         std::string* problem) {
    uint32_t count = 1;
    const Type* vectorScalar = nullptr;
    const Type* plainScalar = nullptr;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const char letter = function.signature[i + 1];
        const Type* type = unpacked(arguments[i]->type);
        if (letter == 'M') {
            if (!type->isMatrix() || (function.typeClass == TypeClass::squareMatrix &&
                                      type->count != type->element->count)) {
                *problem = "takes a matrix";
                return nullptr;
            }
            return type;
        }
        if (letter != 'T' && letter != 'R') {
            continue;
        }
        if (type->isEnum()) {
            type = type->element;
        }
        if (!type->isArithmetic()) {
            *problem = "takes numbers and vectors, not '" + toText(type) + "'";
            return nullptr;
        }
        if (type->isVector()) {
            if (count > 1 && count != type->count) {
                *problem = "takes vectors of one size";
                return nullptr;
            }
            count = type->count;
            vectorScalar = vectorScalar == nullptr || vectorScalar == type->element
                               ? type->element
                               : commonScalar(vectorScalar, type->element);
        } else {
            plainScalar = plainScalar == nullptr || plainScalar == type
                              ? type
                              : commonScalar(plainScalar, type);
        }
    }
    const Type* scalar = vectorScalar != nullptr ? vectorScalar : plainScalar;
    if (scalar == nullptr) {
        return floatType();
    }
    switch (function.typeClass) {
    case TypeClass::floating:
    case TypeClass::floatVector:
        if (!scalar->isFloating()) {
            scalar = floatType();
        }
        break;
    case TypeClass::integer:
        if (scalar->isFloating()) {
            *problem = "takes integers, not '" + toText(scalar) + "'";
            return nullptr;
        }
        scalar = scalar->isBool() ? intType() : scalar;
        break;
    case TypeClass::boolean:
        if (!scalar->isBool()) {
            *problem = "takes bool, not '" + toText(scalar) + "'";
            return nullptr;
        }
        break;
    case TypeClass::arithmetic:
        scalar = scalar->isBool() ? intType() : scalar;
        break;
    default:
        break;
    }
    return vectorType(scalar->kind, count);
}

tree::Expr* Sema::tryLibrary(const LibraryFunction& function, std::vector<tree::Expr*>& arguments,
                             Range range, std::string* problem) {
    if (arguments.size() + 1 != function.signature.size()) {
        const size_t wanted = function.signature.size() - 1;
        *problem = "takes " + std::to_string(wanted) +
                   (wanted == 1 ? " argument, not " : " arguments, not ") +
                   std::to_string(arguments.size());
        return nullptr;
    }
    const Type* generic = deduce(function, arguments, problem);
    if (generic == nullptr) {
        return nullptr;
    }
    if (function.name == "cross" && generic->components() != 3) {
        *problem = "takes vectors of three components";
        return nullptr;
    }
    std::vector<tree::Expr*> items;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const char letter = function.signature[i + 1];
        const Type* wanted = parameterType(letter, generic);
        if (letter == 'R' || letter == 'J') {
            if (unpacked(arguments[i]->type) != wanted) {
                *problem = "writes its result to a '" + toText(wanted) + "', not to a '" +
                           toText(arguments[i]->type) + "'";
                return nullptr;
            }
            if (!writable(arguments[i], arguments[i]->range)) {
                return nullptr;
            }
            items.push_back(arguments[i]);
            continue;
        }
        if (rank(arguments[i]->type, wanted) == Rank::none) {
            *problem = "takes '" + toText(wanted) + "' as argument " + std::to_string(i + 1) +
                       ", not '" + toText(arguments[i]->type) + "'";
            return nullptr;
        }
        items.push_back(convertTo(arguments[i], wanted));
    }
    const char resultLetter = function.signature[0];
    const Type* result = resultLetter == 'v' ? voidType() : parameterType(resultLetter, generic);
    tree::Expr* expr = makeExpr(ExprKind::library, result, range);
    expr->library = &function;
    expr->items = arena_.copy(items);
    return finish(expr);
}

tree::Expr* Sema::callLibrary(std::span<const LibraryFunction> functions,
                              std::vector<tree::Expr*>& arguments, Range range) {
    for (const auto* argument : arguments) {
        if (argument->kind == ExprKind::list) {
            error(argument->range, "a list in braces is no value by itself; name its type");
            return nullptr;
        }
    }
    std::string problem;
    const uint32_t before = diagnostics_.errorCount();
    for (const auto& function : functions) {
        if (tree::Expr* result = tryLibrary(function, arguments, range, &problem)) {
            return result;
        }
    }
    if (diagnostics_.errorCount() == before && !problem.empty()) {
        error(range, "'" + std::string(functions.front().name) + "' " + problem);
    }
    return nullptr;
}

} // namespace msl
