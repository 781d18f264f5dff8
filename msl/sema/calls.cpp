#include <algorithm>

#include "msl/sema/depth.h"
#include "msl/sema/sema.h"

namespace msl {

using tree::ExprKind;

bool Sema::argumentsOf(std::span<ast::Expr* const> items, std::vector<tree::Expr*>& result) {
    bool good = true;
    for (const auto* item : items) {
        tree::Expr* argument = value(item);
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
    const bool sameType = argument->type == parameter.type;
    if (sameType && argument->lvalue && argument->space == parameter.space &&
        (parameter.isConst || !argument->isConst)) {
        return argument->kind != ExprKind::swizzle || argument->componentCount == 1;
    }
    // A constant reference in thread space also takes a value that is not stored.
    return parameter.isConst && parameter.space == AddressSpace::thread &&
           rank(argument->type, parameter.type) != Rank::none;
}

tree::Expr* Sema::call(const ast::Expr* expr) {
    const ast::Expr* callee = expr->a;
    if (callee->kind == ast::ExprKind::member) {
        tree::Expr* object = value(callee->a);
        if (object == nullptr) {
            return nullptr;
        }
        if (callee->op == TokenKind::arrow && object->type->isPointer()) {
            tree::Expr* target = makeExpr(ExprKind::deref, object->type->element, callee->range);
            target->a = object;
            target->lvalue = true;
            target->isConst = object->type->constPointee;
            target->space = object->type->space;
            object = finish(target);
        }
        if (object->type->isTexture()) {
            return textureCall(expr, object, callee->name->name);
        }
        const auto record = records_.find(object->type);
        if (record != records_.end()) {
            for (const auto& method : record->second->methods) {
                if (method.name == callee->name->name) {
                    std::vector<tree::Expr*> arguments;
                    if (!argumentsOf(expr->items, arguments)) {
                        return nullptr;
                    }
                    return callOverloads(method.overloads, object, arguments, expr->items, nullptr,
                                         callee->range, false);
                }
            }
        }
        error(callee->range, "'" + toText(object->type) + "' has no member function '" +
                                 std::string(callee->name->name->text) + "'");
        return nullptr;
    }
    if (callee->kind != ast::ExprKind::name) {
        if (tree::Expr* object = value(callee)) {
            error(callee->range, "'" + toText(object->type) + "' is not a function");
        }
        return nullptr;
    }
    const auto& name = *callee->name;
    std::vector<tree::Expr*> arguments;
    const bool good = argumentsOf(expr->items, arguments);
    Symbol* symbol = lookup(name);
    // A member function called from another of the same struct.
    if (name.spaces.empty() && state_ != nullptr && state_->record != nullptr &&
        (symbol == nullptr || symbol->space != nullptr)) {
        for (const auto& method : state_->record->methods) {
            if (method.name == name.name && state_->function->self != nullptr) {
                return good ? callOverloads(method.overloads,
                                            variableExpr(state_->function->self, callee->range),
                                            arguments, expr->items, nullptr, callee->range, false)
                            : nullptr;
            }
        }
    }
    const auto library = name.spaces.empty() || isMetalSpace(name)
                             ? findLibraryFunctions(name.name)
                             : std::span<const LibraryFunction>();
    if (symbol != nullptr && symbol->kind == SymbolKind::functions) {
        if (!good) {
            return nullptr;
        }
        const bool quiet = !library.empty();
        tree::Expr* result = callOverloads(symbol->overloads, nullptr, arguments, expr->items,
                                           &name, callee->range, quiet);
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
        if (name.spaces.empty() || isMetalSpace(name) || spaceOf(name) != nullptr) {
            reportUnknown(name, "function");
        }
        return nullptr;
    }
    return good ? callLibrary(library, arguments, callee->range) : nullptr;
}

// Chooses among user-written functions as C++ does: a candidate that is no worse for any argument
// and better for one. `quiet` reports nothing where none fits.
tree::Expr* Sema::callOverloads(uint32_t set, tree::Expr* self, std::vector<tree::Expr*>& arguments,
                                std::span<const ast::Expr* const> syntax,
                                const ast::QualifiedName* name, Range range, bool quiet) {
    static_cast<void>(syntax);
    struct Candidate {
        tree::Function* function = nullptr;
        std::vector<Rank> ranks;
        bool fromTemplate = false;
    };
    std::vector<Candidate> candidates;
    // Instantiating may add overload sets, so the set is found anew at every step.
    for (size_t i = 0; i < overloads_[set].size(); ++i) {
        const Overload overload = overloads_[set][i];
        tree::Function* function = overload.function;
        if (function == nullptr) {
            function = instantiate(*overload.pattern, name, arguments);
            if (function == nullptr) {
                continue;
            }
        } else if (name != nullptr && name->hasArguments) {
            continue;
        }
        if (arguments.size() > function->parameters.size() ||
            arguments.size() < function->requiredParameters) {
            continue;
        }
        Candidate candidate{function, {}, overload.function == nullptr};
        bool viable = true;
        for (size_t j = 0; j < arguments.size(); ++j) {
            const auto& parameter = *function->parameters[j];
            Rank fit = rank(arguments[j]->type, parameter.type);
            if (parameter.isReference && !bindsReference(parameter, arguments[j])) {
                fit = Rank::none;
            }
            if (parameter.type->isPointer() && arguments[j]->type->isArray() &&
                arguments[j]->space != parameter.type->space) {
                fit = Rank::none;
            }
            viable = viable && fit != Rank::none;
            candidate.ranks.push_back(fit);
        }
        if (viable) {
            candidates.push_back(std::move(candidate));
        }
    }
    const auto better = [](const Candidate& a, const Candidate& b) {
        bool some = false;
        for (size_t i = 0; i < a.ranks.size(); ++i) {
            if (a.ranks[i] > b.ranks[i]) {
                return false;
            }
            some = some || a.ranks[i] < b.ranks[i];
        }
        return some || (b.fromTemplate && !a.fromTemplate);
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
    if (quiet && candidates.empty()) {
        return nullptr;
    }
    std::string types;
    for (size_t i = 0; i < arguments.size(); ++i) {
        types += (i > 0 ? ", " : "") + toText(arguments[i]->type);
    }
    const auto& overloads = overloads_[set];
    const Name called = overloads.front().function != nullptr ? overloads.front().function->name
                                                              : overloads.front().pattern->name;
    error(range, candidates.empty() ? "no function '" + std::string(called->text) +
                                          "' takes the arguments (" + types + ")"
                                    : "the call of '" + std::string(called->text) +
                                          "' with the arguments (" + types + ") is ambiguous");
    for (const auto& overload : overloads) {
        if (overload.function != nullptr) {
            diagnostics_.note(overload.function->range,
                              "this is '" + signature(*overload.function) + "'");
        } else {
            diagnostics_.note(overload.pattern->range, "this template is a candidate");
        }
    }
    return nullptr;
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
    if (self != nullptr) {
        if (self->isConst && !function.isConst && !function.constructor) {
            error(range, "'" + std::string(function.name->text) +
                             "' may change its object, which is constant here");
            return nullptr;
        }
        if (self->lvalue && !function.isConst) {
            noteAssigned(self);
        }
    }
    tree::Expr* result = makeExpr(ExprKind::call, function.result, range);
    result->function = &function;
    result->a = self;
    result->items = arena_.copy(items);
    return finish(result);
}

} // namespace msl
