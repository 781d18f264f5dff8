#include <algorithm>

#include "msl/sema/depth.h"
#include "msl/sema/sema.h"

namespace msl {

using tree::ExprKind;

bool Sema::argumentsOf(std::span<ast::Expr* const> items, std::vector<tree::Expr*>& result) {
    bool good = true;
    for (const auto* item : expandItems(items)) {
        tree::Expr* argument = nullptr;
        if (item->kind == ast::ExprKind::list) {
            argument = makeExpr(ExprKind::list, voidType(), item->range);
            argument->list = item;
        } else {
            argument = value(item);
        }
        good = good && argument != nullptr;
        result.push_back(argument);
    }
    return good;
}

std::string Sema::signature(const tree::Function& function) const {
    std::string text = std::string(function.name->text) + "(";
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        const auto& parameter = *function.parameters[i];
        text += (i > 0 ? ", " : "") +
                toText(parameter.isReference
                           ? TypeTable(arena_).reference(parameter.type, parameter.space,
                                                         parameter.isConst)
                           : parameter.type);
    }
    return text + ")";
}

// Whether a reference parameter can stand for the argument itself.
bool Sema::bindsReference(const tree::Variable& parameter, const tree::Expr* argument) const {
    const bool sameType =
        argument->type == parameter.type || derivesFrom(argument->type, parameter.type);
    if (sameType && argument->lvalue && argument->space == parameter.space &&
        (parameter.isConst || !argument->isConst)) {
        return argument->kind != ExprKind::swizzle || argument->componentCount == 1;
    }
    // A constant reference in thread space also takes a value that is not stored.
    return parameter.isConst && parameter.space == AddressSpace::thread &&
           rank(argument->type, parameter.type) != Rank::none;
}

tree::Expr* Sema::memberCall(const ast::Expr* expr) {
    const ast::Expr* callee = expr->a;
    tree::Expr* object = value(callee->a);
    if (object == nullptr) {
        return nullptr;
    }
    if (callee->op == TokenKind::arrow && object->type->isPointer()) {
        object = derefExpr(object, callee->range);
    }
    const Name name = callee->name->name;
    if (object->type->isTexture()) {
        return textureCall(expr, object, name);
    }
    if (object->type->isArray() && name->text == "size") {
        return constantExpr(scalarType(TypeKind::ulongType), object->type->length, expr->range);
    }
    const Type* owner = nullptr;
    if (const auto* method = findMethod(object->type, name, owner)) {
        std::vector<tree::Expr*> arguments;
        return argumentsOf(expr->items, arguments)
                   ? callOverloads(method->overloads, asBase(object, owner), arguments,
                                   callee->name, callee->range, false)
                   : nullptr;
    }
    // A member that is itself called: s.f(x), where f has operator().
    if (object->type->isStruct()) {
        if (tree::Expr* member = findField(object, name, callee->range)) {
            return objectCall(member, expr);
        }
    }
    error(callee->range, "'" + toText(object->type) + "' has no member function '" +
                             std::string(name->text) + "'");
    return nullptr;
}

// object(...)
tree::Expr* Sema::objectCall(tree::Expr* object, const ast::Expr* expr) {
    std::vector<tree::Expr*> operands{object};
    if (object == nullptr || !argumentsOf(expr->items, operands)) {
        return nullptr;
    }
    bool found = false;
    tree::Expr* result = operatorCall("operator()", operands, expr->range, found);
    if (!found) {
        error(expr->range, "'" + toText(object->type) + "' is not a function");
    }
    return result;
}

tree::Expr* Sema::call(const ast::Expr* expr) {
    const ast::Expr* callee = expr->a;
    if (callee->kind == ast::ExprKind::member) {
        return memberCall(expr);
    }
    if (callee->kind != ast::ExprKind::name) {
        return objectCall(value(callee), expr);
    }
    const auto& name = *callee->name;
    const uint32_t before = diagnostics_.errorCount();
    Symbol* symbol = lookup(name);
    const bool plain = name.spaces.empty() && name.owner == nullptr;
    if (symbol == nullptr && diagnostics_.errorCount() != before) {
        return nullptr;
    }
    if (symbol != nullptr && symbol->kind == SymbolKind::type) {
        if (expr->items.empty()) {
            return defaultValue(symbol->type, expr->range);
        }
        return fromList(symbol->type, expr->items, expr->designators, expr->range, false);
    }
    if (symbol == nullptr && (plain || isMetalSpace(name))) {
        bool found = false;
        tree::Expr* result = unusualCall(expr, name.name->text, found);
        if (found) {
            return result;
        }
    }
    std::vector<tree::Expr*> arguments;
    const bool good = argumentsOf(expr->items, arguments);
    // A member function called from another of the same struct.
    if (plain && state_ != nullptr && state_->record != nullptr &&
        (symbol == nullptr || symbol->space != nullptr)) {
        const Type* owner = nullptr;
        const auto* method = findMethod(state_->record->space->self, name.name, owner);
        if (method != nullptr) {
            tree::Variable* self = state_->function->self;
            return good ? callOverloads(method->overloads,
                                        self != nullptr
                                            ? asBase(variableExpr(self, callee->range), owner)
                                            : nullptr,
                                        arguments, &name, callee->range, false)
                        : nullptr;
        }
    }
    if (symbol == nullptr && !plain && (name.owner != nullptr || !isMetalSpace(name))) {
        // A static member function, or a base's own one.
        const Space* space = spaceOf(name);
        if (space == nullptr) {
            return nullptr;
        }
        const Type* owner = nullptr;
        if (const auto* method =
                space->self != nullptr ? findMethod(space->self, name.name, owner) : nullptr) {
            tree::Variable* self = state_ != nullptr ? state_->function->self : nullptr;
            const bool ours =
                self != nullptr && (self->type == owner || derivesFrom(self->type, owner));
            return good ? callOverloads(method->overloads,
                                        ours ? asBase(variableExpr(self, callee->range), owner)
                                             : nullptr,
                                        arguments, &name, callee->range, false)
                        : nullptr;
        }
    }
    const auto library = plain || isMetalSpace(name) ? findLibraryFunctions(name.name)
                                                     : std::span<const LibraryFunction>();
    if (symbol != nullptr && symbol->kind == SymbolKind::functions) {
        if (!good) {
            return nullptr;
        }
        const bool quiet = !library.empty();
        tree::Expr* result =
            callOverloads(symbol->overloads, nullptr, arguments, &name, callee->range, quiet);
        if (result != nullptr || !quiet) {
            return result;
        }
        return callLibrary(library, arguments, callee->range);
    }
    if (symbol != nullptr && symbol->kind == SymbolKind::variable && symbol->variable != nullptr &&
        symbol->variable->type->isStruct()) {
        arguments.insert(arguments.begin(), variableExpr(symbol->variable, callee->range));
        bool found = false;
        tree::Expr* result =
            good ? operatorCall("operator()", arguments, callee->range, found) : nullptr;
        if (found || !good) {
            return result;
        }
    }
    if (symbol != nullptr) {
        error(callee->range, "'" + std::string(name.name->text) + "' is not a function");
        return nullptr;
    }
    if (library.empty()) {
        reportUnknown(name, "function");
        return nullptr;
    }
    return good ? callLibrary(library, arguments, callee->range) : nullptr;
}

// Whether braces may make the value of a parameter, as far as their number of values says.
bool Sema::mayInitialise(const ast::Expr& list, const tree::Variable& parameter) const {
    const Type* type = parameter.type;
    if (parameter.isReference && (!parameter.isConst || parameter.space != AddressSpace::thread)) {
        return false;
    }
    const size_t count = list.items.size();
    if (const auto* record = recordOf(type)) {
        if (const auto* method = methodOf(type, record->constructors)) {
            const auto& set = overloads_[method->overloads];
            return std::any_of(set.begin(), set.end(), [&](const Overload& overload) {
                return overload.function != nullptr &&
                       count <= overload.function->parameters.size() &&
                       count >= overload.function->requiredParameters;
            });
        }
    }
    if (type->isStruct()) {
        return count <= type->structure->fields.size() || type->leaves >= count;
    }
    if (type->isArray()) {
        return count <= size_t{type->length} * type->element->leaves;
    }
    return type->isMatrix()   ? count <= size_t{type->count} * type->element->count
           : type->isVector() ? count <= type->count
                              : count <= 1;
}

// Whether the function takes these arguments, and how well each fits, the object's fit first.
bool Sema::viable(const tree::Function& function, const tree::Expr* self,
                  const std::vector<tree::Expr*>& arguments, std::vector<Rank>& ranks) const {
    if (arguments.size() > function.parameters.size() ||
        arguments.size() < function.requiredParameters) {
        return false;
    }
    Rank fit = Rank::exact;
    if (function.self != nullptr && !function.constructor) {
        if (self == nullptr || (self->isConst && !function.isConst)) {
            return false;
        }
        const auto space = self->lvalue ? self->space : AddressSpace::thread;
        if (function.selfSpace != AddressSpace::none && function.selfSpace != space) {
            return false;
        }
        fit = function.isConst && !self->isConst                ? Rank::promotion
              : function.selfSpace == space                     ? Rank::exact
              : space == AddressSpace::thread && !self->isConst ? Rank::exact
                                                                : Rank::promotion;
    }
    ranks.push_back(fit);
    for (size_t i = 0; i < arguments.size(); ++i) {
        const auto& parameter = *function.parameters[i];
        if (arguments[i]->kind == ExprKind::list) {
            if (!mayInitialise(*arguments[i]->list, parameter)) {
                return false;
            }
            ranks.push_back(Rank::user);
            continue;
        }
        fit = rank(arguments[i]->type, parameter.type);
        if (parameter.isReference && !bindsReference(parameter, arguments[i])) {
            fit = Rank::none;
        }
        if (parameter.isReference && fit == Rank::exact && parameter.isConst &&
            !arguments[i]->isConst && arguments[i]->lvalue) {
            fit = Rank::promotion; // a reference that may write fits such an argument better
        }
        if (parameter.type->isPointer() && arguments[i]->type->isArray() &&
            arguments[i]->space != parameter.type->space) {
            fit = Rank::none;
        }
        if (fit == Rank::none) {
            return false;
        }
        ranks.push_back(fit);
    }
    return true;
}

// Chooses among user-written functions as C++ does: a candidate that is no worse for any argument
// and better for one. `quiet` reports nothing where none fits.
tree::Expr* Sema::callOverloads(uint32_t set, tree::Expr* self, std::vector<tree::Expr*>& arguments,
                                const ast::QualifiedName* name, Range range, bool quiet) {
    struct Candidate {
        tree::Function* function = nullptr;
        std::vector<Rank> ranks;
        const ast::Function* pattern = nullptr; // of a template's instance
    };
    std::vector<Candidate> candidates;
    // Instantiating may add overload sets, so the set is found anew at every step.
    for (size_t i = 0; i < overloads_[set].size(); ++i) {
        const Overload overload = overloads_[set][i];
        tree::Function* function = overload.function;
        if (function == nullptr) {
            function = instantiate(overload, name, arguments);
        } else if (name != nullptr && name->hasArguments && !isSpecialisation(overload, *name)) {
            continue;
        }
        Candidate candidate{
            function, {}, overload.function == nullptr ? overload.pattern : nullptr};
        if (function != nullptr && viable(*function, self, arguments, candidate.ranks)) {
            candidates.push_back(std::move(candidate));
        }
    }
    const auto better = [&](const Candidate& a, const Candidate& b) {
        bool some = false;
        for (size_t i = 0; i < a.ranks.size(); ++i) {
            if (a.ranks[i] > b.ranks[i]) {
                return false;
            }
            some = some || a.ranks[i] < b.ranks[i];
        }
        if (some || b.pattern == nullptr) {
            return some;
        }
        return a.pattern == nullptr || specificity(*a.pattern) > specificity(*b.pattern);
    };
    const Candidate* best = nullptr;
    for (const auto& candidate : candidates) {
        const bool wins = std::all_of(candidates.begin(), candidates.end(), [&](const auto& other) {
            return &other == &candidate || better(candidate, other);
        });
        if (wins) {
            best = &candidate;
        }
    }
    if (best != nullptr) {
        return finishCall(*best->function, self, arguments, range);
    }
    if (!quiet || !candidates.empty()) {
        reportNoOverload(set, arguments, range, !candidates.empty());
    }
    return nullptr;
}

// Whether an overload is the specialisation of a function template for the arguments in <>.
bool Sema::isSpecialisation(const Overload& overload, const ast::QualifiedName& name) {
    const auto& syntax = *overload.pattern;
    if (!syntax.isTemplate || !syntax.qualifiedName->hasArguments) {
        return false;
    }
    const auto& own = syntax.qualifiedName->arguments;
    bool same = own.size() >= name.arguments.size();
    for (size_t i = 0; same && i < name.arguments.size(); ++i) {
        const auto& wanted = name.arguments[i];
        if ((wanted.type == nullptr) != (own[i].type == nullptr)) {
            same = false;
        } else if (wanted.type != nullptr) {
            same = resolve(wanted.type) == resolve(own[i].type);
        } else {
            same = integerConstant(wanted.value, "a template argument") ==
                   integerConstant(own[i].value, "a template argument");
        }
    }
    return same;
}

void Sema::reportNoOverload(uint32_t set, const std::vector<tree::Expr*>& arguments, Range range,
                            bool ambiguous) {
    std::string types;
    for (size_t i = 0; i < arguments.size(); ++i) {
        types += (i > 0 ? ", " : "") +
                 (arguments[i]->kind == ExprKind::list ? "{...}" : toText(arguments[i]->type));
    }
    const auto& overloads = overloads_[set];
    const auto called = std::string(overloads.front().pattern->name->text);
    error(range,
          ambiguous ? "the call of '" + called + "' with the arguments (" + types + ") is ambiguous"
                    : "no function '" + called + "' takes the arguments (" + types + ")");
    for (const auto& overload : overloads) {
        if (overload.function != nullptr) {
            diagnostics_.note(overload.function->range,
                              "this is '" + signature(*overload.function) + "'");
        } else {
            diagnostics_.note(overload.pattern->range, "this template is a candidate");
        }
    }
}

tree::Expr* Sema::finishCall(tree::Function& function, tree::Expr* self,
                             std::vector<tree::Expr*>& arguments, Range range) {
    std::vector<tree::Expr*> items;
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        const auto& parameter = *function.parameters[i];
        tree::Expr* argument = i < arguments.size() ? arguments[i] : function.defaults[i];
        if (argument == nullptr) {
            return nullptr;
        }
        if (argument->kind == ExprKind::list) {
            const auto& list = *argument->list;
            argument = fromList(parameter.type, list.items, list.designators, list.range, true);
            if (argument == nullptr) {
                return nullptr;
            }
        }
        if (parameter.isReference && argument->lvalue) {
            argument = asBase(argument, parameter.type);
        }
        if (parameter.isReference && argument->type == parameter.type && argument->lvalue) {
            if (!parameter.isConst) {
                noteAssigned(argument);
            }
        } else {
            argument = convert(argument, parameter.type, argument->range, "the argument");
            if (argument == nullptr) {
                return nullptr;
            }
            if (parameter.type->isPointer() && !parameter.type->constPointee) {
                noteAssigned(argument);
            }
        }
        items.push_back(argument);
    }
    if (self != nullptr && function.self != nullptr && self->lvalue && !function.isConst) {
        noteAssigned(self);
    }
    const uint32_t before = diagnostics_.errorCount();
    analysePending(function);
    // A call ahead of the definition: the body is analysed as soon as it is met.
    function.pending = function.pending || function.syntax->body == nullptr;
    if (diagnostics_.errorCount() != before && function.syntax->isTemplate) {
        diagnostics_.note(range, "this call needs that instance of the template");
    }
    if (function.result == nullptr) {
        error(range, "the type of what '" + std::string(function.name->text) +
                         "' returns is not known before its definition");
        return nullptr;
    }
    tree::Expr* result = makeExpr(ExprKind::call, function.result, range);
    result->function = &function;
    result->a = function.self != nullptr && !function.constructor ? self : nullptr;
    if (function.returnsReference) {
        result->lvalue = true;
        result->isConst = function.resultConst;
        result->space = function.resultSpace;
    }
    result->items = arena_.copy(items);
    return finish(result);
}

} // namespace msl
