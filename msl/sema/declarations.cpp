#include <algorithm>
#include <bit>

#include "msl/sema/depth.h"
#include "msl/sema/sema.h"

namespace msl {

void Sema::declaration(const ast::Decl* decl) {
    const DepthGuard guard(depth_);
    if (tooDeep(decl->range)) {
        return;
    }
    using enum ast::DeclKind;
    if (decl->typeDeclaration != nullptr && decl->typeDeclaration->isDefinition) {
        declaration(decl->typeDeclaration);
    }
    switch (decl->kind) {
    case variables:
        if (decl->isTemplate) {
            error(decl->range, "variable templates are not supported");
            return;
        }
        for (const auto* variable : decl->variables) {
            globalVariable(variable);
        }
        break;
    case function:
        functionDeclaration(decl);
        break;
    case structure:
        if (decl->isTemplate) {
            error(decl->range, "struct templates are not supported");
        } else {
            structDeclaration(decl);
        }
        break;
    case enumeration:
        enumDeclaration(decl);
        break;
    case alias: {
        const Type* type = resolve(decl->type);
        if (type != nullptr) {
            declare(SymbolKind::type, decl->name, decl->range)->type = type;
            if (type->isStruct() && type->structure->name == nullptr) {
                type->structure->name = decl->name;
            }
        }
        break;
    }
    case space: {
        if (decl->target != nullptr) {
            if (!isMetalSpace(*decl->target)) {
                const Symbol* target = lookup(*decl->target);
                if (target != nullptr && target->kind == SymbolKind::space) {
                    declare(SymbolKind::space, decl->name, decl->range)->target = target->target;
                } else {
                    reportUnknown(*decl->target, "namespace");
                }
            }
            break;
        }
        Space* outer = space_;
        Space* inner = nullptr;
        const Symbol* known = decl->name != nullptr ? lookupIn(decl->name, space_) : nullptr;
        if (known != nullptr && known->kind == SymbolKind::space) {
            inner = known->target;
        } else {
            inner = arena_.make<Space>();
            inner->name = decl->name;
            inner->parent = space_;
            if (decl->name != nullptr) {
                declare(SymbolKind::space, decl->name, decl->range)->target = inner;
            } else {
                used_.push_back(inner);
            }
        }
        space_ = inner;
        for (const auto* member : decl->members) {
            declaration(member);
        }
        space_ = outer;
        break;
    }
    case ast::DeclKind::usingSpace:
        Sema::usingSpace(decl);
        break;
    case usingName: {
        if (isMetalSpace(*decl->target)) {
            break;
        }
        Symbol* target = lookup(*decl->target);
        if (target == nullptr) {
            reportUnknown(*decl->target, "name");
            break;
        }
        Symbol* symbol = declare(target->kind, decl->target->name, decl->range);
        symbol->variable = target->variable;
        symbol->type = target->type;
        symbol->target = target->target;
        symbol->value = target->value;
        symbol->overloads = target->overloads;
        break;
    }
    case staticAssert: {
        tree::Expr* test = condition(decl->condition);
        constantSteps_ = 0;
        const auto known = test == nullptr ? std::nullopt : evaluate(test);
        if (test != nullptr && !known) {
            error(decl->range, "an assertion must be known when compiling");
        } else if (known && known->bits == 0) {
            error(decl->range, "the assertion does not hold");
        }
        break;
    }
    }
}

void Sema::usingSpace(const ast::Decl* decl) {
    const auto& target = *decl->target;
    const auto text = target.name->text;
    const Symbol* symbol = lookup(target);
    if (symbol != nullptr && symbol->kind == SymbolKind::space) {
        used_.push_back(symbol->target);
        return;
    }
    if (text != "metal" && text != "simd" && !isMetalSpace(target)) {
        reportUnknown(target, "namespace");
    }
}

void Sema::structDeclaration(const ast::Decl* decl) {
    if (declaredTypes_.contains(decl)) {
        return;
    }
    Symbol* known = decl->name != nullptr ? lookup(decl->name) : nullptr;
    Type* type = nullptr;
    if (known != nullptr && known->kind == SymbolKind::type && sameScope(*known) &&
        known->type->isStruct()) {
        type = const_cast<Type*>(known->type);
        if (decl->isDefinition && type->structure->complete) {
            error(decl->range,
                  "the struct '" + std::string(decl->name->text) + "' is defined twice");
            diagnostics_.note(known->range, "the other definition is here");
            return;
        }
    } else {
        type = types_.makeStruct(decl->name);
        if (decl->name != nullptr) {
            declare(SymbolKind::type, decl->name, decl->range)->type = type;
        }
    }
    declaredTypes_.emplace(decl, type);
    if (!decl->isDefinition) {
        return;
    }
    recordStorage_.push_back(std::make_unique<StructRecord>());
    StructRecord* record = recordStorage_.back().get();
    records_[type] = record;
    record->space = arena_.make<Space>();
    record->space->name = decl->name;
    record->space->parent = space_;
    Space* outer = space_;
    FunctionState* outerState = state_;
    space_ = record->space;
    std::vector<Field> fields;
    std::vector<std::pair<tree::Function*, const ast::Function*>> bodies;
    for (const auto* member : decl->members) {
        if (member->kind == ast::DeclKind::function) {
            continue;
        }
        if (member->kind != ast::DeclKind::variables) {
            state_ = nullptr;
            declaration(member);
            state_ = outerState;
            continue;
        }
        if (member->typeDeclaration != nullptr) {
            state_ = nullptr;
            declaration(member->typeDeclaration);
            state_ = outerState;
        }
        for (const auto* variable : member->variables) {
            if (variable->isStatic || variable->isConstexpr) {
                state_ = nullptr;
                globalVariable(variable);
                state_ = outerState;
                continue;
            }
            const Type* fieldType = resolve(variable->type);
            if (fieldType == nullptr) {
                continue;
            }
            if (fieldType->isVoid() || fieldType->isReference() || fieldType->isPointer() ||
                fieldType->isResource() ||
                (fieldType->isStruct() && !fieldType->structure->complete) ||
                (fieldType->isArray() && fieldType->length == 0)) {
                error(variable->range,
                      "a member of the type '" + toText(fieldType) + "' is not supported");
                continue;
            }
            for (const auto& field : fields) {
                if (field.name == variable->name) {
                    error(variable->range, "the member '" + std::string(variable->name->text) +
                                               "' is declared twice");
                }
            }
            if (variable->init != nullptr) {
                record->defaults.push_back({static_cast<uint32_t>(fields.size()), variable->init});
            }
            fields.push_back({variable->name, fieldType, 0});
        }
    }
    uint64_t total = 0;
    for (const auto& field : fields) {
        total += field.type->size;
    }
    if (total > kMaxTypeBytes) {
        error(decl->range, "the type has more than " + std::to_string(kMaxTypeBytes) + " bytes");
        fields.clear();
    }
    types_.completeStruct(type, fields);
    type->structure->declaration = decl;
    if (!checkSize(type, decl->range)) {
        space_ = outer;
        return;
    }
    // Bodies come last: they may use every member, wherever it stands.
    for (const auto* member : decl->members) {
        if (member->kind != ast::DeclKind::function) {
            continue;
        }
        const auto& syntax = *member->function;
        if (syntax.isTemplate) {
            error(member->range, "templates of member functions are not supported");
            continue;
        }
        state_ = nullptr;
        tree::Function* function = makeFunction(syntax, syntax.isStatic ? nullptr : type);
        state_ = outerState;
        if (function == nullptr) {
            continue;
        }
        Member* slot = nullptr;
        for (auto& method : record->methods) {
            slot = method.name == syntax.name ? &method : slot;
        }
        if (slot == nullptr) {
            record->methods.push_back({syntax.name, static_cast<uint32_t>(overloads_.size())});
            overloads_.emplace_back();
            slot = &record->methods.back();
        }
        overloads_[slot->overloads].push_back({function, nullptr});
        bodies.emplace_back(function, &syntax);
    }
    for (const auto& [function, syntax] : bodies) {
        if (syntax->body != nullptr) {
            analyseBody(*function, record);
        } else {
            error(syntax->range, "a member function must be defined inside its struct");
        }
    }
    space_ = outer;
}

void Sema::enumDeclaration(const ast::Decl* decl) {
    if (declaredTypes_.contains(decl)) {
        return;
    }
    const Type* underlying = intType();
    if (decl->type != nullptr) {
        underlying = resolve(decl->type);
        if (underlying == nullptr) {
            return;
        }
        if (!underlying->isInteger()) {
            error(decl->type->range, "an enum rests on an integer type");
            return;
        }
    }
    Type* type = types_.makeEnum(decl->name, underlying, decl->scoped);
    declaredTypes_.emplace(decl, type);
    if (decl->name != nullptr) {
        declare(SymbolKind::type, decl->name, decl->range)->type = type;
    }
    Space* outer = space_;
    FunctionState* outerState = state_;
    if (decl->scoped) {
        recordStorage_.push_back(std::make_unique<StructRecord>());
        auto* record = recordStorage_.back().get();
        records_[type] = record;
        record->space = arena_.make<Space>();
        record->space->parent = space_;
        space_ = record->space;
        state_ = nullptr;
    }
    uint64_t next = 0;
    for (const auto& enumerator : decl->enumerators) {
        if (enumerator.value != nullptr) {
            const auto known = integerConstant(enumerator.value, "an enumerator");
            if (!known) {
                continue;
            }
            next = static_cast<uint64_t>(*known);
        }
        Symbol* symbol = declare(SymbolKind::enumerator, enumerator.name, enumerator.range);
        symbol->type = type;
        symbol->value = next++;
    }
    space_ = outer;
    state_ = outerState;
}

tree::Variable* Sema::makeVariable(const ast::Variable& syntax, const Type* type,
                                   tree::VariableKind kind) {
    auto* variable = arena_.make<tree::Variable>();
    variable->range = syntax.range;
    variable->name = syntax.name;
    variable->type = type;
    variable->kind = kind;
    variable->isConst = syntax.isConstexpr || syntax.type->isConst;
    variable->attributes = syntax.attributes;
    if (kind == tree::VariableKind::global) {
        variable->slot = unit_.globalCount++;
    } else {
        variable->function = state_ != nullptr ? state_->function : nullptr;
        variable->slot = state_ != nullptr ? state_->slots++ : 0;
    }
    return variable;
}

void Sema::globalVariable(const ast::Variable* syntax) {
    const Symbol* previous = lookup(syntax->name);
    if (previous != nullptr && sameScope(*previous)) {
        error(syntax->range, "'" + std::string(syntax->name->text) + "' is declared twice");
        diagnostics_.note(previous->range, "the other declaration is here");
        return;
    }
    const Type* type = syntax->type->kind == ast::TypeSyntaxKind::array
                           ? resolveArray(syntax->type, syntax->init)
                           : nullptr;
    tree::Expr* init = nullptr;
    if (syntax->type->kind == ast::TypeSyntaxKind::automatic && syntax->init != nullptr &&
        syntax->init->kind != ast::ExprKind::list) {
        init = value(syntax->init);
        type = init == nullptr ? nullptr : unpacked(init->type);
    } else if (syntax->type->kind != ast::TypeSyntaxKind::array) {
        type = resolve(syntax->type);
    }
    Symbol* symbol = declare(SymbolKind::variable, syntax->name, syntax->range);
    if (type == nullptr || !checkSize(type, syntax->range)) {
        return;
    }
    for (const auto& attribute : syntax->attributes) {
        if (attribute.name->text == "function_constant") {
            error(attribute.range, "function constants are not supported");
            return;
        }
    }
    tree::Variable* variable = makeVariable(*syntax, type, tree::VariableKind::global);
    variable->space = AddressSpace::constant;
    if (type->isSampler()) {
        if (samplerVariable(syntax, variable)) {
            symbol->variable = variable;
        }
        return;
    }
    if (type->isVoid() || type->isPointer() || type->isReference() || type->isResource()) {
        error(syntax->range, "a program variable cannot have the type '" + toText(type) + "'");
        return;
    }
    const auto space = syntax->type->space;
    if (space != AddressSpace::constant && !syntax->isConstexpr && !syntax->type->isConst) {
        error(syntax->range, "a variable at program scope lies in the 'constant' address space");
        return;
    }
    variable->isConst = true;
    if (init == nullptr) {
        if (syntax->init == nullptr) {
            error(syntax->range,
                  "the constant '" + std::string(syntax->name->text) + "' needs a value");
            return;
        }
        init = initialise(type, syntax->init, syntax->initKind);
    }
    if (init == nullptr) {
        return;
    }
    if (type->isScalar()) {
        constantSteps_ = 0;
        if (const auto known = evaluate(init)) {
            init = constantExpr(type, known->bits, init->range);
        }
    }
    variable->init = init;
    symbol->variable = variable;
}

bool Sema::sameParameters(const tree::Function& a, const tree::Function& b) const {
    return std::equal(a.parameters.begin(), a.parameters.end(), b.parameters.begin(),
                      b.parameters.end(), [](const auto* left, const auto* right) {
                          return left->type == right->type &&
                                 left->isReference == right->isReference &&
                                 (!left->isReference ||
                                  (left->space == right->space && left->isConst == right->isConst));
                      });
}

// The function without its body. `self` is the struct that it belongs to.
tree::Function* Sema::makeFunction(const ast::Function& syntax, const Type* self) {
    auto* function = arena_.make<tree::Function>();
    function->name = syntax.name;
    function->range = syntax.range;
    function->syntax = &syntax;
    function->stage = syntax.stage;
    function->isConst = syntax.isConst;
    function->constructor = syntax.isConstructor;
    bool good = true;
    if (syntax.isConstructor) {
        function->result = self;
    } else if (syntax.result->kind == ast::TypeSyntaxKind::automatic) {
        error(syntax.range, "a function's result type must be written");
        return nullptr;
    } else {
        function->result = resolve(syntax.result);
        good = function->result != nullptr;
    }
    if (good && (function->result->isReference() || function->result->isPointer() ||
                 function->result->isArray() || function->result->isResource())) {
        error(syntax.range, "a function cannot return '" + toText(function->result) + "'");
        return nullptr;
    }
    uint32_t slot = 0;
    std::vector<tree::Variable*> parameters;
    std::vector<tree::Expr*> defaults;
    for (const auto* parameter : syntax.parameters) {
        const bool reference = parameter->type->kind == ast::TypeSyntaxKind::reference;
        const auto* named = reference ? parameter->type->element : parameter->type;
        const Type* type = resolve(named);
        if (type == nullptr) {
            good = false;
            continue;
        }
        if (type->isVoid() || (type->isStruct() && !type->structure->complete)) {
            error(parameter->range, "a parameter cannot have the type '" + toText(type) + "'");
            good = false;
            continue;
        }
        if (!reference && type->isArray()) {
            type = types_.pointer(type->element,
                                  named->space == AddressSpace::none ? AddressSpace::thread
                                                                     : named->space,
                                  named->isConst || named->space == AddressSpace::constant);
        }
        auto* variable = makeVariable(*parameter, type, tree::VariableKind::parameter);
        variable->function = function;
        variable->slot = slot++;
        variable->isReference = reference;
        if (reference) {
            variable->space =
                named->space == AddressSpace::none ? AddressSpace::thread : named->space;
            variable->isConst = named->isConst || variable->space == AddressSpace::constant;
        } else if (type->isResource()) {
            variable->isConst = true;
        }
        tree::Expr* init = nullptr;
        if (parameter->init != nullptr) {
            init = initialise(type, parameter->init, ast::InitKind::equal);
            good = good && init != nullptr;
        } else {
            function->requiredParameters = static_cast<uint32_t>(parameters.size() + 1);
        }
        parameters.push_back(variable);
        defaults.push_back(init);
    }
    if (self != nullptr) {
        auto* object = arena_.make<tree::Variable>();
        object->range = syntax.range;
        object->type = self;
        object->kind = tree::VariableKind::parameter;
        object->isReference = !syntax.isConstructor;
        object->isConst = syntax.isConst;
        object->function = function;
        object->slot = slot++;
        function->self = object;
    }
    function->variableCount = slot;
    function->parameters = arena_.copy(parameters);
    function->defaults = arena_.copy(defaults);
    return good ? function : nullptr;
}

void Sema::functionDeclaration(const ast::Decl* decl) {
    const auto& syntax = *decl->function;
    if (syntax.stage == ast::FunctionStage::kernel) {
        diagnostics_.warning(syntax.range, "the kernel '" + std::string(syntax.name->text) +
                                               "' is skipped: only vertex and fragment "
                                               "functions are compiled");
        sawKernel_ = true;
        return;
    }
    if (!syntax.qualifiedName->spaces.empty()) {
        error(syntax.range, "a member function must be defined inside its struct or namespace");
        return;
    }
    Symbol* known = lookupIn(syntax.name, space_);
    if (known != nullptr && known->kind != SymbolKind::functions) {
        error(syntax.range, "'" + std::string(syntax.name->text) + "' is declared twice");
        diagnostics_.note(known->range, "the other declaration is here");
        return;
    }
    tree::Function* function = nullptr;
    if (!syntax.isTemplate) {
        function = makeFunction(syntax, nullptr);
    }
    if (known == nullptr) {
        known = declare(SymbolKind::functions, syntax.name, syntax.range);
        known->overloads = static_cast<uint32_t>(overloads_.size());
        overloads_.emplace_back();
        if (function == nullptr && !syntax.isTemplate) {
            // A wrong function still has a name; calls of it say nothing new.
            known->kind = SymbolKind::variable;
            return;
        }
    }
    if (syntax.isTemplate) {
        if (syntax.body == nullptr) {
            return;
        }
        overloads_[known->overloads].push_back({nullptr, &syntax});
        return;
    }
    if (function == nullptr) {
        return;
    }
    for (auto& overload : overloads_[known->overloads]) {
        if (overload.function == nullptr || !sameParameters(*overload.function, *function)) {
            continue;
        }
        if (overload.function->result != function->result) {
            error(syntax.range, "two functions '" + std::string(syntax.name->text) +
                                    "' differ only in what they return");
            diagnostics_.note(overload.function->range, "the other declaration is here");
            return;
        }
        if (syntax.body == nullptr) {
            return;
        }
        if (overload.function->syntax->body != nullptr) {
            error(syntax.range, "the function '" + signature(*function) + "' is defined twice");
            diagnostics_.note(overload.function->range, "the other definition is here");
            return;
        }
        // The definition of what has been declared: calls already refer to the first one, which
        // keeps its default arguments.
        const auto defaults = overload.function->defaults;
        const uint32_t required =
            std::min(overload.function->requiredParameters, function->requiredParameters);
        for (auto* parameter : function->parameters) {
            parameter->function = overload.function;
        }
        *overload.function = *function;
        overload.function->defaults = defaults;
        overload.function->requiredParameters = required;
        analyseBody(*overload.function, nullptr);
        entryPoint(*overload.function);
        return;
    }
    overloads_[known->overloads].push_back({function, nullptr});
    if (syntax.body != nullptr) {
        analyseBody(*function, nullptr);
        entryPoint(*function);
    }
}

void Sema::entryPoint(tree::Function& function) {
    if (function.stage == ast::FunctionStage::none) {
        return;
    }
    for (const auto* other : unit_.entryPoints) {
        if (other->name == function.name && other->stage == function.stage) {
            error(function.range,
                  "there are two entry points named '" + std::string(function.name->text) + "'");
            return;
        }
    }
    unit_.entryPoints.push_back(&function);
}

void Sema::analyseBody(tree::Function& function, StructRecord* record) {
    const auto& syntax = *function.syntax;
    FunctionState* const outerState = state_;
    // An instance of a template shares its state, which holds the template's arguments.
    const bool shared = outerState != nullptr && outerState->function == &function;
    FunctionState fresh;
    FunctionState& state = shared ? *outerState : fresh;
    state.function = &function;
    state.result = syntax.isConstructor ? voidType() : function.result;
    state.record = record;
    state.slots = function.variableCount;
    state_ = &state;
    const size_t mark = scope_.size();
    const size_t outerStart = scopeStart_;
    scopeStart_ = mark;
    for (auto* parameter : function.parameters) {
        parameter->function = &function;
        if (parameter->name == nullptr) {
            continue;
        }
        Symbol* previous = lookup(parameter->name);
        if (previous != nullptr && previous->space == nullptr && sameScope(*previous)) {
            error(parameter->range,
                  "the parameter '" + std::string(parameter->name->text) + "' is declared twice");
        }
        declare(SymbolKind::variable, parameter->name, parameter->range)->variable = parameter;
    }
    std::vector<tree::Stmt*> items;
    bool good = true;
    if (syntax.isConstructor) {
        tree::Stmt* object = makeStmt(tree::StmtKind::declare, syntax.range);
        object->variable = function.self;
        object->expr = defaultValue(function.self->type, syntax.range);
        good = object->expr != nullptr;
        items.push_back(object);
        for (const auto* init : syntax.memberInits) {
            const auto& fields = function.self->type->structure->fields;
            const auto field = std::find_if(fields.begin(), fields.end(), [&](const Field& item) {
                return item.name == init->name;
            });
            if (field == fields.end()) {
                error(init->range, "there is no member '" + std::string(init->name->text) + "'");
                good = false;
                continue;
            }
            tree::Expr* source = fromList(field->type, init->init->items, {}, init->range,
                                          init->initKind == ast::InitKind::brace);
            if (source == nullptr) {
                good = false;
                continue;
            }
            tree::Expr* target =
                fieldExpr(variableExpr(function.self, init->range),
                          static_cast<uint32_t>(field - fields.begin()), init->range);
            tree::Expr* assignExpr = makeExpr(tree::ExprKind::assign, field->type, init->range);
            assignExpr->a = target;
            assignExpr->b = source;
            tree::Stmt* stmt = makeStmt(tree::StmtKind::expression, init->range);
            stmt->expr = finish(assignExpr);
            items.push_back(stmt);
        }
    }
    tree::Stmt* body = compound(syntax.body);
    if (body != nullptr && good) {
        items.push_back(body);
        function.body = items.size() == 1 ? body : block(items, syntax.range);
        if (!state.result->isVoid() && !body->mayReturn) {
            error(syntax.range, "the function '" + std::string(syntax.name->text) + "' returns '" +
                                    toText(state.result) + "' but has no 'return'");
        }
    }
    function.variableCount = state.slots;
    closeScope(mark);
    scopeStart_ = outerStart;
    state_ = outerState;
}

// constexpr sampler name(option, ...): the options are words of the library's namespaces.
bool Sema::samplerVariable(const ast::Variable* syntax, tree::Variable* variable) {
    SamplerOptions options;
    struct Word {
        std::string_view name;
        int value;
    };
    static constexpr Word kAddresses[] = {{"clamp_to_edge", 0},
                                          {"clamp_to_zero", 1},
                                          {"clamp_to_border", 2},
                                          {"repeat", 3},
                                          {"mirrored_repeat", 4}};
    static constexpr Word kFilters[] = {{"nearest", 0}, {"linear", 1}};
    static constexpr Word kMipFilters[] = {{"none", 0}, {"nearest", 1}, {"linear", 2}};
    static constexpr Word kCompares[] = {{"never", 0},     {"less", 1},          {"less_equal", 2},
                                         {"greater", 3},   {"greater_equal", 4}, {"equal", 5},
                                         {"not_equal", 6}, {"always", 7}};
    static constexpr Word kBorders[] = {
        {"transparent_black", 0}, {"opaque_black", 1}, {"opaque_white", 2}};
    static constexpr Word kCoordinates[] = {{"normalized", 0}, {"pixel", 1}};
    const auto find = [](std::span<const Word> words, std::string_view name) {
        for (const auto& word : words) {
            if (word.name == name) {
                return word.value;
            }
        }
        return -1;
    };
    const auto items = syntax->init != nullptr ? syntax->init->items : std::span<ast::Expr*>();
    for (const auto* item : items) {
        if (item->kind == ast::ExprKind::call && item->a->kind == ast::ExprKind::name) {
            const auto word = item->a->name->name->text;
            std::vector<float> numbers;
            for (const auto* operand : item->items) {
                tree::Expr* expr = value(operand);
                constantSteps_ = 0;
                const auto known = expr == nullptr ? std::nullopt : evaluate(expr);
                const auto number = known ? convertScalar(*known, floatType()) : std::nullopt;
                if (!number) {
                    error(operand->range, "a sampler's option must be known when compiling");
                    return false;
                }
                numbers.push_back(static_cast<float>(std::bit_cast<double>(number->bits)));
            }
            if (word == "max_anisotropy" && numbers.size() == 1 && numbers[0] >= 1.0F &&
                numbers[0] <= 16.0F) {
                options.maxAnisotropy = static_cast<uint32_t>(numbers[0]);
            } else if (word == "lod_clamp" && numbers.size() == 2) {
                options.lodMin = numbers[0];
                options.lodMax = numbers[1];
            } else {
                error(item->range, "this is no option of a sampler");
                return false;
            }
            continue;
        }
        int found = -1;
        if (item->kind == ast::ExprKind::name && !item->name->spaces.empty()) {
            const auto set = item->name->spaces.back()->text;
            const auto word = item->name->name->text;
            const auto address = [&] {
                found = find(kAddresses, word);
                return static_cast<SamplerAddress>(std::max(found, 0));
            };
            const auto filter = [&] {
                found = find(kFilters, word);
                return static_cast<SamplerFilter>(std::max(found, 0));
            };
            if (set == "coord") {
                found = find(kCoordinates, word);
                options.normalizedCoordinates = found == 0;
            } else if (set == "address") {
                options.sAddress = options.tAddress = options.rAddress = address();
            } else if (set == "s_address") {
                options.sAddress = address();
            } else if (set == "t_address") {
                options.tAddress = address();
            } else if (set == "r_address") {
                options.rAddress = address();
            } else if (set == "filter") {
                options.magFilter = options.minFilter = filter();
            } else if (set == "mag_filter") {
                options.magFilter = filter();
            } else if (set == "min_filter") {
                options.minFilter = filter();
            } else if (set == "mip_filter") {
                found = find(kMipFilters, word);
                options.mipFilter = static_cast<SamplerMipFilter>(std::max(found, 0));
            } else if (set == "compare_func") {
                found = find(kCompares, word);
                options.compare = static_cast<SamplerCompare>(std::max(found, 0));
            } else if (set == "border_color") {
                found = find(kBorders, word);
                options.border = static_cast<SamplerBorder>(std::max(found, 0));
            }
        }
        if (found < 0) {
            error(item->range, "this is no option of a sampler");
            return false;
        }
    }
    variable->isConst = true;
    const auto same = std::find(unit_.samplers.begin(), unit_.samplers.end(), options);
    variable->samplerIndex = static_cast<uint32_t>(same - unit_.samplers.begin());
    if (same == unit_.samplers.end()) {
        if (unit_.samplers.size() >= kMaxConstantSamplers) {
            error(syntax->range, "a source has at most " + std::to_string(kMaxConstantSamplers) +
                                     " different constexpr samplers");
            return false;
        }
        unit_.samplers.push_back(options);
    }
    return true;
}

} // namespace msl
