#include <algorithm>
#include <bit>

#include "msl/sema/sema.h"

namespace msl {

using tree::ExprKind;

const Type* Sema::commonScalar(const Type* a, const Type* b) const {
    const auto promoted = [](const Type* type) {
        return type->isInteger() && type->kind < TypeKind::intType ? intType() : type;
    };
    a = promoted(a);
    b = promoted(b);
    return a->kind >= b->kind ? a : b;
}

// How well a value of one type stands for the other, conversions that the source defines last.
Rank Sema::rank(const Type* from, const Type* to) const {
    const Rank standard = standardRank(from, to);
    return standard == Rank::none && userConversion(from, to) != nullptr ? Rank::user : standard;
}

// The converting constructor or the conversion operator that leads from one type to the other.
const tree::Function* Sema::userConversion(const Type* from, const Type* to) const {
    if (to->isStruct() && from != to) {
        const auto* record = recordOf(to);
        const auto* method = record == nullptr ? nullptr : methodOf(to, record->constructors);
        const tree::Function* best = nullptr;
        Rank bestRank = Rank::none;
        for (size_t i = 0; method != nullptr && i < overloads_[method->overloads].size(); ++i) {
            const auto* function = overloads_[method->overloads][i].function;
            if (function == nullptr || function->isExplicit || function->parameters.empty() ||
                function->requiredParameters > 1 || function->parameters[0]->type == to) {
                continue;
            }
            const Rank fit = standardRank(from, function->parameters[0]->type);
            if (fit < bestRank) {
                best = function;
                bestRank = fit;
            }
        }
        return best;
    }
    const auto* method = from->isStruct() ? conversionsOf(from) : nullptr;
    const tree::Function* best = nullptr;
    Rank bestRank = Rank::none;
    for (size_t i = 0; method != nullptr && i < overloads_[method->overloads].size(); ++i) {
        const auto* function = overloads_[method->overloads][i].function;
        const Rank fit = function == nullptr ? Rank::none : standardRank(function->result, to);
        if (fit < bestRank) {
            best = function;
            bestRank = fit;
        }
    }
    return best;
}

const Sema::Member* Sema::conversionsOf(const Type* type) const {
    if (const auto* record = recordOf(type)) {
        for (const auto& method : record->methods) {
            if (method.name->text == "operator type") {
                return &method;
            }
        }
    }
    return nullptr;
}

// The one conversion of a struct to numbers or vectors.
const tree::Function* Sema::userArithmetic(const Type* type) const {
    const auto* method = type->isStruct() ? conversionsOf(type) : nullptr;
    const tree::Function* only = nullptr;
    for (size_t i = 0; method != nullptr && i < overloads_[method->overloads].size(); ++i) {
        const auto* function = overloads_[method->overloads][i].function;
        if (function != nullptr &&
            (function->result->isArithmetic() || function->result->isMatrix())) {
            if (only != nullptr && only->result != function->result) {
                return nullptr;
            }
            only = function;
        }
    }
    return only;
}

// A struct that converts to numbers as that number; anything else itself.
tree::Expr* Sema::decayed(tree::Expr* expr) {
    const auto* function = userArithmetic(expr->type);
    return function == nullptr ? expr : convertTo(expr, function->result);
}

Rank Sema::standardRank(const Type* from, const Type* to) const {
    from = unpacked(from);
    to = unpacked(to);
    if (from == to) {
        return Rank::exact;
    }
    if (from->isEnum() && !from->enumeration->scoped && to->isScalar()) {
        return to == from->element ? Rank::promotion : Rank::conversion;
    }
    if (from->isEnum() && from->enumeration->scoped) {
        return Rank::none;
    }
    if (derivesFrom(from, to)) {
        return Rank::conversion;
    }
    if (to->isPointer() && from->isPointer() && derivesFrom(from->element, to->element) &&
        from->space == to->space && (to->constPointee || !from->constPointee)) {
        return Rank::conversion;
    }
    if (from->isScalar() && to->isScalar()) {
        const bool small = from->isInteger() && from->kind < TypeKind::intType;
        if ((small && to == intType()) || (from->kind == TypeKind::halfType && to == floatType())) {
            return Rank::promotion;
        }
        return Rank::conversion;
    }
    if ((from->isScalar() || from->isEnum()) && to->isVector()) {
        return Rank::splat;
    }
    if (from->isVector() && to->isVector() && from->count == to->count) {
        return Rank::vectorConversion;
    }
    if (from->isMatrix() && to->isMatrix() && from->count == to->count &&
        from->element->count == to->element->count) {
        return Rank::vectorConversion;
    }
    if (to->isPointer() && from->isPointer() && from->element == to->element &&
        from->space == to->space && (to->constPointee || !from->constPointee)) {
        return Rank::promotion;
    }
    if (to->isPointer() && from->isArray() && from->element == to->element) {
        return Rank::exact;
    }
    return Rank::none;
}

// The conversion itself, known to be possible.
tree::Expr* Sema::convertTo(tree::Expr* expr, const Type* to) {
    if (unpacked(expr->type) == unpacked(to)) {
        return expr;
    }
    if (expr->kind == ExprKind::constant && (to->isScalar() || to->isEnum())) {
        if (const auto value = convertScalar({expr->type, expr->bits}, to)) {
            return constantExpr(to, value->bits, expr->range);
        }
    }
    if (derivesFrom(expr->type, to)) {
        return asBase(expr, to);
    }
    if (to->isPointer() && expr->type->isPointer() &&
        derivesFrom(expr->type->element, to->element)) {
        tree::Expr* address = makeExpr(ExprKind::addressOf, to, expr->range);
        address->a = asBase(derefExpr(expr, expr->range), to->element);
        return finish(address);
    }
    if (expr->type->isStruct() || to->isStruct()) {
        const auto* function = userConversion(expr->type, to);
        if (function == nullptr) {
            return expr;
        }
        std::vector<tree::Expr*> arguments;
        tree::Expr* self = expr;
        if (function->constructor) {
            arguments.push_back(expr);
            self = nullptr;
        }
        tree::Expr* made =
            finishCall(const_cast<tree::Function&>(*function), self, arguments, expr->range);
        return made == nullptr ? expr : convertTo(made, to);
    }
    if (to->isPointer() && expr->type->isArray()) {
        // An array is the address of its first element.
        tree::Expr* element = makeExpr(ExprKind::index, expr->type->element, expr->range);
        element->a = expr;
        element->b = constantExpr(intType(), 0, expr->range);
        element->lvalue = true;
        element->isConst = expr->isConst;
        element->space = expr->space;
        tree::Expr* address = makeExpr(ExprKind::addressOf, to, expr->range);
        address->a = finish(element);
        return finish(address);
    }
    if (to->isPointer()) {
        tree::Expr* same = arena_.make<tree::Expr>(*expr);
        same->type = to;
        return same;
    }
    tree::Expr* result = makeExpr(ExprKind::convert, unpacked(to), expr->range);
    result->a = expr;
    return finish(result);
}

tree::Expr* Sema::convert(tree::Expr* expr, const Type* to, Range range, std::string_view what) {
    if (rank(expr->type, to) == Rank::none) {
        error(range, std::string(what) + " has the type '" + toText(expr->type) +
                         "', which does not convert to '" + toText(to) + "'");
        return nullptr;
    }
    if (to->isPointer() && expr->type->isArray()) {
        if (expr->space != to->space && !(expr->space == AddressSpace::none)) {
            error(range, std::string(what) + " lies in another address space than '" + toText(to) +
                             "' names");
            return nullptr;
        }
        noteAssigned(expr);
    }
    warnLostFraction(*expr, to);
    return convertTo(expr, to);
}

tree::Expr* Sema::explicitConvert(tree::Expr* expr, const Type* to, Range range) {
    const Type* from = expr->type;
    if (to->isReference()) {
        tree::Expr* target = asBase(expr, to->element);
        if (target->lvalue && target->type == to->element && target->space == to->space) {
            return target;
        }
    }
    if (from->isEnum() && (to->isScalar() || to->isEnum())) {
        return convertTo(expr, to);
    }
    if (to->isEnum() && from->isScalar()) {
        return convertTo(expr, to);
    }
    if (to->isVoid()) {
        tree::Expr* result = makeExpr(ExprKind::convert, to, range);
        result->a = expr;
        return finish(result);
    }
    if (to->isMatrix() && from->isScalar()) {
        return matrixFrom(to, {expr}, range);
    }
    if (to->isPointer() && from->isPointer() && from->space == to->space) {
        if (from->element == to->element) {
            return convertTo(expr, to);
        }
        return pointerCast(expr, to, range);
    }
    if (rank(from, to) == Rank::none) {
        error(range, "'" + toText(from) + "' does not convert to '" + toText(to) + "'");
        return nullptr;
    }
    return convertTo(expr, to);
}

// Buffers under a pointer that is cast are seen as words, which have any type. Elsewhere only the
// components of a vector can be walked.
tree::Expr* Sema::pointerCast(tree::Expr* expr, const Type* to, Range range) {
    const Type* from = expr->type;
    const bool components = from->element->isVector() && to->element == from->element->element;
    const bool buffer =
        from->space == AddressSpace::constant || from->space == AddressSpace::device;
    if (!components && (!buffer || to->element->holdsResources() || to->element->isVoid())) {
        error(range, "'" + toText(from) + "' does not convert to '" + toText(to) + "'");
        return nullptr;
    }
    unit_.castsPointers = unit_.castsPointers || !components;
    tree::Expr* result = makeExpr(ExprKind::convert, to, range);
    result->a = expr;
    return finish(result);
}

// Small integers and enumerations become int, as C++ promotes operands.
tree::Expr* Sema::promote(tree::Expr* expr) {
    const Type* type = expr->type;
    if (type->isEnum() && !type->enumeration->scoped) {
        return convertTo(expr, commonScalar(type->element, intType()));
    }
    if (type->isInteger() && type->kind < TypeKind::intType) {
        return convertTo(expr, intType());
    }
    return expr;
}

tree::Expr* Sema::vectorFrom(const Type* type, std::vector<tree::Expr*> parts, Range range) {
    type = unpacked(type);
    if (parts.empty()) {
        return defaultValue(type, range);
    }
    for (auto*& part : parts) {
        const bool own = parts.size() == 1 && userConversion(part->type, type) != nullptr;
        part = own ? convertTo(part, type) : decayed(part);
    }
    if (parts.size() == 1 &&
        (parts[0]->type->isScalar() || parts[0]->type->isEnum() ||
         (parts[0]->type->isVector() && parts[0]->type->count == type->count))) {
        return explicitConvert(parts[0], type, range);
    }
    uint32_t total = 0;
    for (auto*& part : parts) {
        if (!part->type->isArithmetic() && !part->type->isEnum()) {
            error(part->range, "a vector cannot be made from '" + toText(part->type) + "'");
            return nullptr;
        }
        total += part->type->components();
        part = convertTo(part, vectorType(type->element->kind, part->type->components()));
    }
    if (total != type->count) {
        error(range, "'" + toText(type) + "' needs " + std::to_string(type->count) +
                         " components, not " + std::to_string(total));
        return nullptr;
    }
    tree::Expr* result = makeExpr(ExprKind::construct, type, range);
    result->items = arena_.copy(parts);
    return finish(result);
}

tree::Expr* Sema::matrixFrom(const Type* type, std::vector<tree::Expr*> parts, Range range) {
    const Type* column = type->element;
    const uint32_t columns = type->count;
    const uint32_t rows = column->count;
    if (parts.empty()) {
        return defaultValue(type, range);
    }
    if (parts.size() == 1 && parts[0]->type->isMatrix()) {
        return explicitConvert(parts[0], type, range);
    }
    std::vector<tree::Expr*> result;
    if (parts.size() == 1 && parts[0]->type->isScalar()) {
        // A scalar fills the diagonal.
        tree::Expr* scalar = convertTo(parts[0], type->scalar());
        tree::Expr* matrix = makeExpr(ExprKind::construct, type, range);
        matrix->items = arena_.copy(std::vector<tree::Expr*>{scalar});
        return finish(matrix);
    }
    if (parts.size() == columns && parts[0]->type->isVector()) {
        for (auto* part : parts) {
            tree::Expr* converted = convert(part, column, part->range, "a column");
            if (converted == nullptr) {
                return nullptr;
            }
            result.push_back(converted);
        }
    } else if (parts.size() == size_t{columns} * rows) {
        for (uint32_t i = 0; i < columns; ++i) {
            const auto first = parts.begin() + static_cast<ptrdiff_t>(i * rows);
            tree::Expr* made = vectorFrom(column, {first, first + rows}, range);
            if (made == nullptr) {
                return nullptr;
            }
            result.push_back(made);
        }
    } else {
        error(range, "'" + toText(type) + "' is made from " + std::to_string(columns) +
                         " columns or " + std::to_string(columns * rows) + " numbers, not from " +
                         std::to_string(parts.size()) + " values");
        return nullptr;
    }
    tree::Expr* matrix = makeExpr(ExprKind::construct, type, range);
    matrix->items = arena_.copy(result);
    return finish(matrix);
}

// What a value of the type is when nothing is said: zeros, and a struct's own default values.
tree::Expr* Sema::defaultValue(const Type* type, Range range) {
    if (auto* constructor = defaultConstructor(type)) {
        std::vector<tree::Expr*> none;
        return finishCall(*constructor, nullptr, none, range);
    }
    return memberDefaults(type, range);
}

tree::Function* Sema::defaultConstructor(const Type* type) const {
    const auto* record = recordOf(type);
    const auto* method = record == nullptr ? nullptr : methodOf(type, record->constructors);
    for (size_t i = 0; method != nullptr && i < overloads_[method->overloads].size(); ++i) {
        auto* function = overloads_[method->overloads][i].function;
        if (function != nullptr && function->requiredParameters == 0) {
            return function;
        }
    }
    return nullptr;
}

// The value that a constructor starts from.
tree::Expr* Sema::memberDefaults(const Type* type, Range range) {
    if (type->isStruct()) {
        const auto* record = recordOf(type);
        const bool plain = record == nullptr || record->defaults.empty();
        bool nested = false;
        for (const auto& field : type->structure->fields) {
            nested = nested || field.type->isStruct();
        }
        if (!plain || nested) {
            size_t used = 0;
            return aggregate(type, {}, {}, used, range);
        }
    }
    return finish(makeExpr(ExprKind::zero, type, range));
}

tree::Expr* Sema::initialise(const Type* type, const ast::Expr* init, ast::InitKind kind) {
    if (init->kind == ast::ExprKind::list) {
        return fromList(type, init->items, init->designators, init->range,
                        kind != ast::InitKind::paren);
    }
    tree::Expr* expr = value(init);
    if (expr == nullptr) {
        return nullptr;
    }
    return convert(expr, type, init->range, "the value");
}

// Whether the list is a library array's, whose elements stand in braces of their own.
bool Sema::wrapsElements(const Type* type, std::span<ast::Expr* const> items) const {
    if (items.size() != 1 || items[0]->kind != ast::ExprKind::list) {
        return false;
    }
    const auto inner = items[0]->items;
    const bool lists = std::any_of(inner.begin(), inner.end(), [](const ast::Expr* item) {
        return item->kind == ast::ExprKind::list;
    });
    const Type* element = type->element;
    if (element->isArray() || element->isStruct() || element->isMatrix()) {
        return lists && std::all_of(inner.begin(), inner.end(), [](const ast::Expr* item) {
                   return item->kind == ast::ExprKind::list;
               });
    }
    return lists || inner.size() > element->components();
}

tree::Expr* Sema::fromList(const Type* type, std::span<ast::Expr* const> items,
                           std::span<const Name> designators, Range range, bool braces) {
    items = expandItems(items);
    if (items.empty() && braces) {
        return defaultValue(type, range);
    }
    if (type->isStruct()) {
        const auto* record = recordOf(type);
        if (const auto* method =
                record == nullptr ? nullptr : methodOf(type, record->constructors)) {
            std::vector<tree::Expr*> arguments;
            if (!argumentsOf(items, arguments)) {
                return nullptr;
            }
            if (arguments.size() == 1 && arguments[0]->type == type) {
                return arguments[0];
            }
            return callOverloads(method->overloads, nullptr, arguments, nullptr, range, false);
        }
    }
    if (type->isArray() || type->isStruct()) {
        if (items.size() == 1 && items[0]->kind != ast::ExprKind::list && designators.empty()) {
            const uint32_t before = diagnostics_.errorCount();
            tree::Expr* only = value(items[0]);
            if (only == nullptr || diagnostics_.errorCount() != before) {
                return nullptr;
            }
            if (only->type == type) {
                return only;
            }
            if (!braces && userConversion(only->type, type) != nullptr) {
                return convertTo(only, type);
            }
            pending_.emplace(items[0], only);
        }
        if (!braces && items.size() == 1 && items[0]->kind == ast::ExprKind::list) {
            return fromList(type, items[0]->items, items[0]->designators, range, true);
        }
        if (!braces) {
            error(range, "'" + toText(type) + "' is made with braces, not with parentheses");
            return nullptr;
        }
        if (type->isArray() && wrapsElements(type, items)) {
            items = items[0]->items;
        }
        size_t used = 0;
        tree::Expr* result = aggregate(type, items, designators, used, range);
        if (result != nullptr && used < items.size()) {
            error(items[used]->range, "there are more values than '" + toText(type) + "' has");
            return nullptr;
        }
        return result;
    }
    std::vector<tree::Expr*> parts;
    for (const auto* item : items) {
        // Inner braces are those of a column, or needless.
        parts.push_back(item->kind == ast::ExprKind::list
                            ? fromList(type->isMatrix() ? type->element : type->scalar(),
                                       item->items, item->designators, item->range, true)
                            : value(item));
        if (parts.back() == nullptr) {
            return nullptr;
        }
    }
    if (type->isVector()) {
        return vectorFrom(type, parts, range);
    }
    if (type->isMatrix()) {
        return matrixFrom(type, parts, range);
    }
    if (parts.size() != 1) {
        error(range, "'" + toText(type) + "' is made from one value, not from " +
                         std::to_string(parts.size()));
        return nullptr;
    }
    return braces || type->holdsResources() ? convert(parts[0], type, parts[0]->range, "the value")
                                            : explicitConvert(parts[0], type, range);
}

// The pointer that stands for a reference member; nothing, and a diagnostic, where the member
// cannot refer to the value.
tree::Expr* Sema::referenceTo(const Type* pointer, tree::Expr* target) {
    if (target == nullptr) {
        return nullptr;
    }
    if (!target->lvalue || target->type != pointer->element || target->space != pointer->space ||
        (target->isConst && !pointer->constPointee)) {
        error(target->range, "a reference to '" + toText(pointer->element) +
                                 "' cannot refer to this value of the type '" +
                                 toText(target->type) + "'");
        return nullptr;
    }
    noteAssigned(target);
    tree::Expr* result = makeExpr(ExprKind::addressOf, pointer, target->range);
    result->a = target;
    return finish(result);
}

// A union from its first member's value, or from the one that is named.
tree::Expr* Sema::unionFrom(const Type* type, std::span<ast::Expr* const> items,
                            std::span<const Name> designators, size_t& used, Range range) {
    const auto fields = type->structure->fields;
    if (used >= items.size() || fields.empty()) {
        return finish(makeExpr(ExprKind::zero, type, range));
    }
    uint32_t member = 0;
    if (!designators.empty() && designators[used] != nullptr) {
        while (member < fields.size() && fields[member].name != designators[used]) {
            ++member;
        }
        if (member == fields.size()) {
            error(items[used]->range, "'" + toText(type) + "' has no member '" +
                                          std::string(designators[used]->text) + "'");
            return nullptr;
        }
    }
    const Type* part = fields[member].type;
    tree::Expr* made = nullptr;
    if (items[used]->kind != ast::ExprKind::list && (part->isArray() || part->isStruct())) {
        made = aggregate(part, items, {}, used, range);
    } else {
        made = initialise(part, items[used++], ast::InitKind::brace);
    }
    if (made == nullptr) {
        return nullptr;
    }
    tree::Expr* result = makeExpr(ExprKind::construct, type, range);
    result->items = arena_.copy(std::vector<tree::Expr*>{made});
    result->index = member;
    return finish(result);
}

// An array or struct from a list, whose inner braces may be left out.
tree::Expr* Sema::aggregate(const Type* type, std::span<ast::Expr* const> items,
                            std::span<const Name> designators, size_t& used, Range range) {
    const size_t count = type->isArray() ? type->length : type->structure->fields.size();
    if (type->leaves > kMaxTypeLeaves * 4) {
        error(range, "a value of more than " + std::to_string(kMaxTypeLeaves * 4) +
                         " parts cannot be initialised");
        return nullptr;
    }
    if (type->isStruct() && type->structure->isUnion) {
        return unionFrom(type, items, designators, used, range);
    }
    std::vector<tree::Expr*> parts(count, nullptr);
    size_t position = 0;
    while (used < items.size() && (position < count || !designators.empty())) {
        if (!designators.empty() && designators[used] != nullptr) {
            position = count;
            for (size_t i = 0; type->isStruct() && i < count; ++i) {
                if (type->structure->fields[i].name == designators[used]) {
                    position = i;
                }
            }
            if (position == count) {
                error(items[used]->range, "'" + toText(type) + "' has no member '" +
                                              std::string(designators[used]->text) + "'");
                return nullptr;
            }
        }
        if (position >= count) {
            break;
        }
        const Type* part = type->isArray() ? type->element : type->structure->fields[position].type;
        const ast::Expr* item = items[used];
        tree::Expr* made = nullptr;
        if (item->kind == ast::ExprKind::list) {
            made = fromList(part, item->items, item->designators, item->range, true);
            ++used;
        } else if (part->isArray() || part->isStruct()) {
            tree::Expr* whole = value(item);
            if (whole == nullptr) {
                return nullptr;
            }
            if (whole->type == part) {
                made = whole;
                ++used;
            } else {
                pending_.emplace(item, whole);
                made = aggregate(part, items, {}, used, item->range);
            }
        } else {
            const bool reference =
                type->isStruct() && type->structure->fields[position].isReference;
            made = reference ? referenceTo(part, value(item))
                             : initialise(part, item, ast::InitKind::brace);
            ++used;
        }
        if (made == nullptr) {
            return nullptr;
        }
        parts[position++] = made;
    }
    const auto* record = recordOf(type);
    for (size_t i = 0; i < count; ++i) {
        if (parts[i] != nullptr) {
            continue;
        }
        const Type* part = type->isArray() ? type->element : type->structure->fields[i].type;
        const ast::Expr* init = nullptr;
        if (record != nullptr) {
            for (const auto& given : record->defaults) {
                init = given.field == i ? given.init : init;
            }
        }
        parts[i] = init != nullptr ? initialise(part, init, ast::InitKind::equal)
                                   : defaultValue(part, range);
        if (parts[i] == nullptr) {
            return nullptr;
        }
    }
    tree::Expr* result = makeExpr(ExprKind::construct, type, range);
    result->items = arena_.copy(parts);
    return finish(result);
}

} // namespace msl
