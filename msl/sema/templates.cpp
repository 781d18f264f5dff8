// Templates: deduction of their arguments and the making of their instances.
#include "msl/sema/sema.h"

namespace msl {

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

} // namespace msl
