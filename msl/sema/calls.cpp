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

// --- templates

bool Sema::match(const ast::TypeSyntax* syntax, const Type* type,
                 std::span<const ast::TemplateParameter> parameters,
                 std::vector<TemplateBinding>& bindings) {
    switch (syntax->kind) {
    case ast::TypeSyntaxKind::named:
        for (size_t i = 0; i < parameters.size(); ++i) {
            if (parameters[i].valueType == nullptr && syntax->name->spaces.empty() &&
                parameters[i].name == syntax->name->name) {
                if (bindings[i].type == nullptr) {
                    bindings[i].type = unpacked(type);
                }
                return true;
            }
        }
        if (syntax->name->hasArguments && syntax->name->name->text == "vec" && type->isVector() &&
            syntax->name->arguments.size() == 2) {
            const auto& arguments = syntax->name->arguments;
            if (arguments[1].value != nullptr && arguments[1].value->kind == ast::ExprKind::name) {
                for (size_t i = 0; i < parameters.size(); ++i) {
                    if (parameters[i].name == arguments[1].value->name->name) {
                        bindings[i].value = type->count;
                    }
                }
            }
            return arguments[0].type == nullptr ||
                   match(arguments[0].type, type->element, parameters, bindings);
        }
        return true;
    case ast::TypeSyntaxKind::reference:
        return match(syntax->element, type, parameters, bindings);
    case ast::TypeSyntaxKind::pointer:
        return !type->isPointer() || match(syntax->element, type->element, parameters, bindings);
    case ast::TypeSyntaxKind::array:
        if (type->isArray() && syntax->length != nullptr &&
            syntax->length->kind == ast::ExprKind::name) {
            for (size_t i = 0; i < parameters.size(); ++i) {
                if (parameters[i].name == syntax->length->name->name) {
                    bindings[i].value = type->length;
                }
            }
        }
        return !type->isArray() || match(syntax->element, type->element, parameters, bindings);
    default:
        return true;
    }
}

// The instance of a template for these arguments; nothing where they do not fit it.
tree::Function* Sema::instantiate(const ast::Function& pattern, const ast::QualifiedName* name,
                                  const std::vector<tree::Expr*>& arguments) {
    const auto& parameters = pattern.templateParameters;
    std::vector<TemplateBinding> bindings(parameters.size());
    if (name != nullptr && name->hasArguments) {
        if (name->arguments.size() > parameters.size()) {
            return nullptr;
        }
        for (size_t i = 0; i < name->arguments.size(); ++i) {
            const auto& given = name->arguments[i];
            if ((given.type == nullptr) == (parameters[i].valueType == nullptr)) {
                return nullptr;
            }
            if (given.type != nullptr) {
                bindings[i].type = resolve(given.type);
            } else if (const auto known = integerConstant(given.value, "a template argument")) {
                bindings[i].value = static_cast<uint64_t>(*known);
            }
            if (bindings[i].type == nullptr && !bindings[i].value) {
                return nullptr;
            }
        }
    }
    if (arguments.size() > pattern.parameters.size()) {
        return nullptr;
    }
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (!match(pattern.parameters[i]->type, arguments[i]->type, parameters, bindings)) {
            return nullptr;
        }
    }
    Instance key{&pattern, {}, {}, nullptr};
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (bindings[i].type == nullptr && parameters[i].defaultType != nullptr) {
            bindings[i].type = resolve(parameters[i].defaultType);
        }
        if (!bindings[i].value && parameters[i].defaultValue != nullptr) {
            if (const auto known =
                    integerConstant(parameters[i].defaultValue, "a template argument")) {
                bindings[i].value = static_cast<uint64_t>(*known);
            }
        }
        if (parameters[i].valueType == nullptr ? bindings[i].type == nullptr
                                               : !bindings[i].value.has_value()) {
            return nullptr;
        }
        key.types.push_back(bindings[i].type);
        key.values.push_back(bindings[i].value.value_or(0));
    }
    for (const auto& instance : instances_) {
        if (instance.pattern == key.pattern && instance.types == key.types &&
            instance.values == key.values) {
            return instance.function;
        }
    }
    if (instances_.size() >= kMaxTemplateInstances || templateDepth_ >= kMaxTemplateDepth) {
        error(pattern.range, "templates need more than " + std::to_string(kMaxTemplateInstances) +
                                 " instances or are nested more than " +
                                 std::to_string(kMaxTemplateDepth) + " deep");
        return nullptr;
    }
    const size_t slot = instances_.size();
    instances_.push_back(key);
    ++templateDepth_;
    // The template's own scope: what is local where it is called is not visible in it.
    FunctionState* const outerState = state_;
    FunctionState state;
    auto* function = arena_.make<tree::Function>();
    state.function = function;
    state_ = &state;
    const size_t mark = scope_.size();
    const size_t outerStart = scopeStart_;
    scopeStart_ = mark;
    bool good = true;
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (parameters[i].name == nullptr) {
            continue;
        }
        if (parameters[i].valueType == nullptr) {
            declare(SymbolKind::type, parameters[i].name, parameters[i].range)->type =
                bindings[i].type;
            continue;
        }
        const Type* type = resolve(parameters[i].valueType);
        good = good && type != nullptr;
        Symbol* symbol = declare(SymbolKind::value, parameters[i].name, parameters[i].range);
        symbol->type = type;
        symbol->value = *bindings[i].value;
    }
    tree::Function* made = good ? makeFunction(pattern, nullptr) : nullptr;
    if (made != nullptr) {
        *function = *made;
        instances_[slot].function = function;
        if (pattern.body != nullptr) {
            analyseBody(*function, nullptr);
        }
    }
    closeScope(mark);
    scopeStart_ = outerStart;
    state_ = outerState;
    --templateDepth_;
    return made != nullptr ? function : nullptr;
}

// --- the library

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

// The arguments of a texture's member, brought to fixed places: 0 texture, 1 sampler, 2 coordinate,
// 3 array index, 4 compared value, 5 level or bias, 6 and 7 gradients, 8 offset. `index` says what
// 5 to 7 are: 0 nothing, 1 bias, 2 level, 3 gradients.
tree::Expr* Sema::textureCall(const ast::Expr* expr, tree::Expr* texture, Name name) {
    const Range range = expr->a->range;
    const auto* member = findTextureMember(name->text);
    if (member == nullptr) {
        error(range, "'" + toText(texture->type) + "' has no member function '" +
                         std::string(name->text) + "', or it is not supported");
        return nullptr;
    }
    const Type& type = *texture->type;
    static constexpr uint8_t kCoordinates[] = {1, 2, 3, 3, 2, 3};
    const uint32_t coordinates = kCoordinates[static_cast<size_t>(type.shape)];
    const bool cube =
        type.shape == TextureShape::textureCube || type.shape == TextureShape::textureCubeArray;
    const bool arrayed =
        type.shape == TextureShape::texture2dArray || type.shape == TextureShape::textureCubeArray;
    std::vector<tree::Expr*> items(9, nullptr);
    items[0] = texture;
    size_t next = 0;
    const auto& given = expr->items;
    tree::Expr* result = makeExpr(ExprKind::library, nullptr, range);
    result->library = member;
    const auto take = [&](size_t place, const Type* wanted, std::string_view what) {
        if (next >= given.size()) {
            error(range, "'" + std::string(name->text) + "' needs " + std::string(what));
            return false;
        }
        tree::Expr* argument = value(given[next]);
        if (argument == nullptr) {
            return false;
        }
        items[place] = convert(argument, wanted, given[next]->range, what);
        ++next;
        return items[place] != nullptr;
    };
    const bool sampling =
        member->special == Special::sample || member->special == Special::sampleCompare ||
        member->special == Special::gather || member->special == Special::gatherCompare;
    const bool compares =
        member->special == Special::sampleCompare || member->special == Special::gatherCompare;
    const Type* four = vectorType(type.element->kind, 4);
    if (sampling) {
        if (compares != type.depth && compares) {
            error(range, "only depth textures compare");
            return nullptr;
        }
        if (!take(1, samplerType(), "a sampler") ||
            !take(2, vectorType(TypeKind::floatType, coordinates), "a coordinate") ||
            (arrayed && !take(3, uintType(), "an array index")) ||
            (compares && !take(4, floatType(), "a value to compare with"))) {
            return nullptr;
        }
        while (next < given.size()) {
            const ast::Expr* option = given[next];
            const auto word =
                option->kind == ast::ExprKind::call && option->a->kind == ast::ExprKind::name
                    ? option->a->name->name->text
                    : std::string_view();
            const bool gradient = word.starts_with("gradient");
            if (word == "level" || word == "bias" || gradient) {
                const size_t count = gradient ? 2 : 1;
                if (option->items.size() != count) {
                    error(option->range,
                          "'" + std::string(word) + "' takes " + std::to_string(count) + " values");
                    return nullptr;
                }
                for (size_t i = 0; i < count; ++i) {
                    tree::Expr* operand = value(option->items[i]);
                    operand = operand == nullptr
                                  ? nullptr
                                  : convert(operand,
                                            gradient ? vectorType(TypeKind::floatType, coordinates)
                                                     : floatType(),
                                            option->items[i]->range, "the value");
                    if (operand == nullptr) {
                        return nullptr;
                    }
                    items[(gradient ? 6U : 5U) + i] = operand;
                }
                result->index = word == "bias" ? 1 : word == "level" ? 2 : 3;
                ++next;
                continue;
            }
            if (word == "min_lod_clamp") {
                error(option->range, "'min_lod_clamp' is not supported");
                return nullptr;
            }
            if (member->special == Special::gather && option->kind == ast::ExprKind::name &&
                !option->name->spaces.empty() && option->name->spaces.back()->text == "component") {
                const auto component = std::string_view("xyzw").find(option->name->name->text);
                if (component == std::string_view::npos) {
                    error(option->range, "a component is x, y, z or w");
                    return nullptr;
                }
                result->componentCount = static_cast<uint8_t>(component);
                ++next;
                continue;
            }
            if (cube || items[8] != nullptr) {
                break;
            }
            if (!take(8, vectorType(TypeKind::intType, coordinates), "an offset")) {
                return nullptr;
            }
            if (!evaluate(items[8]) && items[8]->kind != ExprKind::zero) {
                bool constant =
                    items[8]->kind == ExprKind::construct || items[8]->kind == ExprKind::convert;
                for (const auto* part : items[8]->items) {
                    constant = constant && evaluate(part).has_value();
                }
                if (!constant) {
                    error(items[8]->range, "an offset must be known when compiling");
                    return nullptr;
                }
            }
        }
        const bool one = type.depth && member->special != Special::gather &&
                         member->special != Special::gatherCompare;
        result->type = one ? type.element : four;
    } else if (member->special == Special::read) {
        if (cube) {
            error(range, "reading single texels of cube textures is not supported");
            return nullptr;
        }
        if (!take(2, vectorType(TypeKind::uintType, coordinates), "a coordinate") ||
            (arrayed && !take(3, uintType(), "an array index")) ||
            (next < given.size() && !take(5, uintType(), "a level"))) {
            return nullptr;
        }
        result->type = type.depth ? type.element : four;
    } else {
        if (next < given.size() && !take(5, uintType(), "a level")) {
            return nullptr;
        }
        const bool fits =
            member->special == Special::width || member->special == Special::mipLevels ||
            (member->special == Special::height && type.shape != TextureShape::texture1d) ||
            (member->special == Special::depth && type.shape == TextureShape::texture3d) ||
            (member->special == Special::arraySize && arrayed);
        if (!fits) {
            error(range, "'" + toText(&type) + "' has no '" + std::string(name->text) + "'");
            return nullptr;
        }
        result->type = uintType();
    }
    if (next < given.size()) {
        error(given[next]->range, "'" + std::string(name->text) + "' takes no such argument here");
        return nullptr;
    }
    result->a = texture;
    result->items = arena_.copy(items);
    return finish(result);
}

} // namespace msl
