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
            declareTemplate(decl);
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
            declareTemplate(decl);
        } else {
            structDeclaration(decl);
        }
        break;
    case enumeration:
        enumDeclaration(decl);
        break;
    case alias: {
        if (decl->isTemplate) {
            declareTemplate(decl);
            return;
        }
        const Type* type = resolve(decl->type);
        if (type != nullptr) {
            declare(SymbolKind::type, decl->name, decl->range)->type = type;
            if (type->isStruct() && type->structure->name == nullptr) {
                type->structure->name = decl->name;
            }
        }
        break;
    }
    case ast::DeclKind::instantiation:
        Sema::instantiation(decl);
        break;
    case ast::DeclKind::space:
        spaceDeclaration(decl);
        break;
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
        symbol->pattern = target->pattern;
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

void Sema::spaceDeclaration(const ast::Decl* decl) {
    if (decl->target != nullptr) {
        if (isMetalSpace(*decl->target)) {
            return;
        }
        const Symbol* target = lookup(*decl->target);
        if (target != nullptr && target->kind == SymbolKind::space) {
            declare(SymbolKind::space, decl->name, decl->range)->target = target->target;
        } else {
            reportUnknown(*decl->target, "namespace");
        }
        return;
    }
    Space* const outer = space_;
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
            if (decl->isInline) {
                std::vector<Space*> inside(space_->bases.begin(), space_->bases.end());
                inside.push_back(inner);
                space_->bases = arena_.copy(inside);
            }
        } else {
            used_.push_back(inner);
        }
    }
    space_ = inner;
    for (const auto* member : decl->members) {
        declaration(member);
    }
    space_ = outer;
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
    const Symbol* earlier = decl->name != nullptr ? lookup(decl->name) : nullptr;
    const bool declared = earlier != nullptr && earlier->kind == SymbolKind::type &&
                          sameScope(*earlier) && earlier->type->isEnum() &&
                          earlier->type->element == underlying;
    const Type* type =
        declared ? earlier->type : types_.makeEnum(decl->name, underlying, decl->scoped);
    declaredTypes_.emplace(decl, type);
    if (decl->name != nullptr && !declared) {
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
    if (!attributeNumbers(syntax->attributes)) {
        return;
    }
    tree::Variable* variable = makeVariable(*syntax, type, tree::VariableKind::global);
    variable->space = AddressSpace::constant;
    if (type->isSampler()) {
        if (samplerVariable(syntax, variable)) {
            symbol->variable = variable;
        }
        return;
    }
    for (const auto& attribute : syntax->attributes) {
        if (attribute.name->text == "function_constant") {
            if (givenConstant(*variable, attribute)) {
                symbol->variable = variable;
            }
            return;
        }
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

// constant T name [[function_constant(n)]];
bool Sema::givenConstant(tree::Variable& variable, const ast::Attribute& attribute) {
    const Type* type = variable.type;
    if (!attribute.hasNumber) {
        error(attribute.range, "'[[function_constant]]' needs a number");
        return false;
    }
    if (!type->isScalar() || type->size == 8) {
        error(variable.range, "a function constant of the type '" + toText(type) +
                                  "' is not supported; scalars of at most 32 bits are");
        return false;
    }
    for (const auto& other : unit_.constants) {
        if (other.index == attribute.number) {
            error(attribute.range, "the function constant " + std::to_string(attribute.number) +
                                       " is taken already");
            return false;
        }
    }
    variable.isConst = true;
    variable.init = functionConstant(type, attribute.number, variable.range);
    const auto kind = type->isBool()       ? FunctionConstantType::boolean
                      : type->isFloating() ? FunctionConstantType::number
                      : type->isSigned()   ? FunctionConstantType::signedInteger
                                           : FunctionConstantType::unsignedInteger;
    unit_.constants.push_back({std::string(variable.name->text), attribute.number, kind});
    return true;
}

} // namespace msl
