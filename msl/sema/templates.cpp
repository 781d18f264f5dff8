// Templates: deduction of their arguments, choice among specialisations, and the making of their
// instances. An instance's arguments are declared in a namespace of their own, which stands between
// the instance and the place of its template.
#include <algorithm>

#include "msl/sema/context.h"
#include "msl/sema/depth.h"

namespace msl {

namespace {

// The parameter that a name in a template's own text means.
std::optional<size_t> parameterIndex(std::span<const ast::TemplateParameter> parameters,
                                     const ast::QualifiedName& name) {
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (name.spaces.empty() && name.owner == nullptr && parameters[i].name == name.name) {
            return i;
        }
    }
    return std::nullopt;
}

const ast::Expr* nameIn(const ast::TemplateArgument& argument) {
    return argument.value != nullptr && argument.value->kind == ast::ExprKind::name ? argument.value
                                                                                    : nullptr;
}

Range rangeOf(const ast::TemplateArgument& argument) {
    return argument.type != nullptr ? argument.type->range : argument.value->range;
}

bool bind(TemplateBinding& binding, const TemplateBinding& given) {
    if (binding.known()) {
        return binding == given;
    }
    binding = given;
    return true;
}

} // namespace

bool Sema::spendInstance(Range range) {
    if (instances_.size() < kMaxTemplateInstances && templateDepth_ < kMaxTemplateDepth) {
        return true;
    }
    error(range, "templates need more than " + std::to_string(kMaxTemplateInstances) +
                     " instances or are nested more than " + std::to_string(kMaxTemplateDepth) +
                     " deep");
    return false;
}

// --- deduction

bool Sema::matchArgument(const ast::TemplateArgument& syntax, const TemplateBinding& given,
                         Parameters parameters, Bindings& bindings) {
    if (const auto* name = nameIn(syntax)) {
        if (const auto index = parameterIndex(parameters, *name->name)) {
            return bind(bindings[*index], given);
        }
    }
    if (syntax.type != nullptr) {
        return given.type != nullptr && match(syntax.type, given.type, parameters, bindings);
    }
    if (!given.value) {
        return false;
    }
    const auto value = integerConstant(syntax.value, "a template argument");
    return value && static_cast<uint64_t>(*value) == *given.value;
}

// Finds what the parameters stand for where `syntax`, a type in the template's text, is `type`.
// False where it cannot be that type; what says nothing of the parameters is left to the caller.
bool Sema::match(const ast::TypeSyntax* syntax, const Type* type, Parameters parameters,
                 Bindings& bindings) {
    switch (syntax->kind) {
    case ast::TypeSyntaxKind::named:
        break;
    case ast::TypeSyntaxKind::reference:
        return match(syntax->element, type->isReference() ? type->element : type, parameters,
                     bindings);
    case ast::TypeSyntaxKind::pointer:
        return (type->isPointer() || type->isArray()) &&
               match(syntax->element, type->element, parameters, bindings);
    case ast::TypeSyntaxKind::array:
        return type->isArray() &&
               (syntax->length == nullptr ||
                matchArgument({nullptr, syntax->length}, {nullptr, type->length}, parameters,
                              bindings)) &&
               match(syntax->element, type->element, parameters, bindings);
    case ast::TypeSyntaxKind::builtin:
        return true;
    default:
        return true;
    }
    const auto& name = *syntax->name;
    if (const auto index = parameterIndex(parameters, name); index && !name.hasArguments) {
        return parameters[*index].valueType == nullptr &&
               bind(bindings[*index], {unpacked(type), std::nullopt});
    }
    if (!name.hasArguments) {
        return true;
    }
    // The type's own arguments, in the order in which its template takes them.
    Bindings own;
    const auto text = name.name->text;
    if (const auto* record = recordOf(type); record != nullptr && record->pattern != nullptr) {
        const Symbol* symbol = lookup(name);
        if (symbol == nullptr || symbol->pattern != record->pattern) {
            return false;
        }
        own = record->arguments;
    } else if (type->isVector() && text == "vec") {
        own = {{type->element, std::nullopt}, {nullptr, type->count}};
    } else if (type->isMatrix() && text == "matrix") {
        own = {{type->scalar(), std::nullopt},
               {nullptr, type->count},
               {nullptr, type->element->count}};
    } else if (type->isArray() && text == "array") {
        own = {{type->element, std::nullopt}, {nullptr, type->length}};
    } else if (type->isTexture()) {
        return name.arguments[0].type == nullptr ||
               match(name.arguments[0].type, type->element, parameters, bindings);
    } else {
        return text != "vec" && text != "matrix" && text != "array";
    }
    return matchList(name.arguments, own, parameters, bindings);
}

// The arguments written in <>. False where they are not what the parameters take.
bool Sema::bindGiven(std::span<const ast::TemplateArgument> given, Parameters parameters,
                     Bindings& bindings) {
    const auto list = expandArguments(given, given.empty() ? Range{} : rangeOf(given.front()));
    size_t next = 0;
    for (size_t i = 0; i < parameters.size() && next < list.size(); ++i) {
        if (!parameters[i].isPack) {
            bindings[i] = bindOne(list[next++], parameters[i]);
            if (!bindings[i].known()) {
                return false;
            }
            continue;
        }
        bindings[i].isPack = true;
        while (next < list.size()) {
            bindings[i].pack.push_back(bindOne(list[next++], parameters[i]));
            if (!bindings[i].pack.back().known()) {
                return false;
            }
        }
    }
    return next == list.size();
}

// What one argument in <> means; nothing where it is not what the parameter takes.
TemplateBinding Sema::bindOne(const GivenArgument& given, const ast::TemplateParameter& parameter) {
    TemplateBinding binding;
    const auto outer = packIndex_;
    packIndex_ = given.element;
    if (parameter.valueType == nullptr) {
        if (given.syntax->type != nullptr) {
            binding.type = resolve(given.syntax->type);
        } else if (const auto* name = nameIn(*given.syntax)) {
            ast::TypeSyntax syntax;
            syntax.kind = ast::TypeSyntaxKind::named;
            syntax.name = name->name;
            syntax.range = name->range;
            binding.type = resolveNamed(&syntax);
        }
    } else if (given.syntax->value != nullptr) {
        if (const auto value = integerConstant(given.syntax->value, "a template argument")) {
            binding.value = static_cast<uint64_t>(*value);
        }
    }
    packIndex_ = outer;
    return binding;
}

// A default may name the parameters before it.
bool Sema::bindDefaults(Parameters parameters, Bindings& bindings, Space* parent) {
    for (size_t i = 0; i < parameters.size(); ++i) {
        auto& binding = bindings[i];
        if (parameters[i].isPack) {
            binding.isPack = true;
            continue;
        }
        if (!binding.known()) {
            if (parameters[i].defaultType == nullptr && parameters[i].defaultValue == nullptr) {
                return false;
            }
            const Context context(*this, parameterSpace(parameters.first(i), bindings, parent));
            if (parameters[i].defaultType != nullptr) {
                binding.type = resolve(parameters[i].defaultType);
            } else if (const auto value =
                           integerConstant(parameters[i].defaultValue, "a template argument")) {
                binding.value = static_cast<uint64_t>(*value);
            }
        }
        if (parameters[i].valueType == nullptr ? binding.type == nullptr : !binding.value) {
            return false;
        }
    }
    return true;
}

Space* Sema::parameterSpace(Parameters parameters, const Bindings& bindings, Space* parent) {
    auto* space = arena_.make<Space>();
    space->parent = parent;
    const Context context(*this, space);
    for (size_t i = 0; i < parameters.size(); ++i) {
        const auto& parameter = parameters[i];
        if (parameter.isPack && parameter.name != nullptr) {
            const bool types = parameter.valueType == nullptr;
            const auto& elements = bindings[i].pack;
            const Symbol* pack = declarePack(types ? SymbolKind::type : SymbolKind::value,
                                             parameter.name, parameter.range, elements.size());
            for (size_t j = 0; j < elements.size(); ++j) {
                pack->pack[j]->type = types ? elements[j].type : resolve(parameter.valueType);
                pack->pack[j]->value = elements[j].value.value_or(0);
            }
            continue;
        }
        if (parameter.valueType == nullptr) {
            if (parameter.name != nullptr) {
                declare(SymbolKind::type, parameter.name, parameter.range)->type = bindings[i].type;
            }
            continue;
        }
        const Type* type = resolve(parameter.valueType);
        if (parameter.name != nullptr && type != nullptr) {
            Symbol* symbol = declare(SymbolKind::value, parameter.name, parameter.range);
            symbol->type = type;
            symbol->value = *bindings[i].value;
        }
    }
    return space;
}

// --- functions

// The instance of a function template for these arguments; nothing where they do not fit it. What
// goes wrong in its declaration says only that it is no candidate.
tree::Function* Sema::instantiate(const Overload& overload, const ast::QualifiedName* name,
                                  const std::vector<tree::Expr*>& arguments) {
    const auto& pattern = *overload.pattern;
    const auto parameters = Parameters(pattern.templateParameters);
    Instance key{.pattern = &pattern, .bindings = Bindings(parameters.size())};
    if (overload.space->self != nullptr) {
        // Instances of a struct template share the pattern.
        key.bindings.push_back({.type = overload.space->self, .value = std::nullopt});
    }
    const bool takesPack = !pattern.parameters.empty() && pattern.parameters.back()->isPack;
    if (arguments.size() > pattern.parameters.size() && !takesPack) {
        return nullptr;
    }
    tree::Function* function = nullptr;
    Space* space = nullptr;
    {
        const Diagnostics::Muted muted(diagnostics_);
        if (name != nullptr && name->hasArguments &&
            !bindGiven(name->arguments, parameters, key.bindings)) {
            return nullptr;
        }
        Bindings deduced(parameters.size());
        {
            const Context context(*this, overload.space);
            for (size_t i = 0; i < arguments.size(); ++i) {
                if (arguments[i]->kind == tree::ExprKind::list) {
                    continue;
                }
                if (takesPack && i + 1 >= pattern.parameters.size()) {
                    if (!matchPackElement(pattern.parameters.back()->type, arguments[i]->type,
                                          parameters, deduced)) {
                        return nullptr;
                    }
                    continue;
                }
                // Later arguments that would bind a parameter otherwise convert to it.
                Bindings tried = deduced;
                if (match(pattern.parameters[i]->type, arguments[i]->type, parameters, tried)) {
                    deduced = tried;
                } else if (tried == deduced &&
                           pattern.parameters[i]->type->kind == ast::TypeSyntaxKind::named &&
                           pattern.parameters[i]->type->name->hasArguments) {
                    return nullptr;
                }
            }
        }
        for (size_t i = 0; i < parameters.size(); ++i) {
            auto& binding = key.bindings[i];
            binding = binding.known() ? binding : deduced[i];
        }
        Bindings own(key.bindings.begin(),
                     key.bindings.begin() + static_cast<ptrdiff_t>(parameters.size()));
        if (!bindDefaults(parameters, own, overload.space)) {
            return nullptr;
        }
        std::copy(own.begin(), own.end(), key.bindings.begin());
        for (const auto& instance : instances_) {
            if (instance.pattern == key.pattern && instance.bindings == key.bindings) {
                return instance.function;
            }
        }
        if (instances_.size() < kMaxTemplateInstances && templateDepth_ < kMaxTemplateDepth) {
            space = parameterSpace(parameters, own, overload.space);
            const Context context(*this, space);
            function = makeFunction(pattern, overload.self);
        }
    }
    if (space == nullptr) {
        spendInstance(pattern.range);
        return nullptr;
    }
    key.function = function;
    instances_.push_back(std::move(key));
    if (function != nullptr) {
        function->pending = pattern.body != nullptr;
        function->space = space;
    }
    return function;
}

// How much a template's parameters say of their arguments, a pack less than nothing.
size_t Sema::specificity(const ast::Function& pattern) const {
    size_t sum = 1;
    for (const auto* parameter : pattern.parameters) {
        const auto* syntax = parameter->type->kind == ast::TypeSyntaxKind::reference
                                 ? parameter->type->element
                                 : parameter->type;
        const bool bare = syntax->kind == ast::TypeSyntaxKind::named &&
                          parameterIndex(pattern.templateParameters, *syntax->name).has_value();
        sum += bare ? 1 : 2;
        if (parameter->isPack) {
            return 0;
        }
    }
    return sum;
}

// An explicit instantiation analyses what it names; that of an entry point's template is an entry
// point, under the name that [[host_name("name")]] gives it.
void Sema::instantiation(const ast::Decl* decl) {
    if (decl->function == nullptr) {
        resolve(decl->type);
        return;
    }
    const auto& syntax = *decl->function;
    if (syntax.stage == ast::FunctionStage::kernel) {
        unit_.hasKernels = true;
        return;
    }
    const Symbol* symbol = lookup(*syntax.qualifiedName);
    if (symbol == nullptr || symbol->kind != SymbolKind::functions) {
        error(syntax.range,
              "there is no function template named '" + std::string(syntax.name->text) + "'");
        return;
    }
    const auto* wanted = makeFunction(syntax, nullptr);
    if (wanted == nullptr) {
        return;
    }
    std::vector<tree::Expr*> arguments;
    for (auto* parameter : wanted->parameters) {
        arguments.push_back(variableExpr(parameter, parameter->range));
    }
    for (size_t i = 0; i < overloads_[symbol->overloads].size(); ++i) {
        const Overload overload = overloads_[symbol->overloads][i];
        tree::Function* function = overload.function != nullptr
                                       ? nullptr
                                       : instantiate(overload, syntax.qualifiedName, arguments);
        if (function == nullptr || !sameParameters(*function, *wanted)) {
            continue;
        }
        analysePending(*function);
        if (function->stage != ast::FunctionStage::none) {
            for (const auto& attribute : syntax.attributes) {
                if (attribute.name->text == "host_name" && !attribute.string.empty()) {
                    function->name = names_.intern(attribute.string);
                }
            }
            entryPoint(*function);
        }
        return;
    }
    error(syntax.range, "no template '" + std::string(syntax.name->text) +
                            "' has an instance with these parameters");
}

// A template's function is analysed when it is first called.
void Sema::analysePending(tree::Function& function) {
    if (!function.pending || function.syntax->body == nullptr) {
        return;
    }
    function.pending = false;
    Space* space = static_cast<Space*>(function.space);
    StructRecord* record = nullptr;
    for (const Space* at = space; at != nullptr && record == nullptr; at = at->parent) {
        record = at->self != nullptr ? recordOf(at->self) : nullptr;
    }
    const bool instance =
        function.syntax->isTemplate || (record != nullptr && record->pattern != nullptr);
    if (instance && !spendInstance(function.range)) {
        return;
    }
    templateDepth_ += instance ? 1 : 0;
    const DepthGuard guard(depth_);
    const Context context(*this, space);
    auto outerTypes = std::move(declaredTypes_);
    declaredTypes_.clear();
    auto outerPending = std::move(pending_);
    pending_.clear();
    analyseBody(function, record);
    pending_ = std::move(outerPending);
    declaredTypes_ = std::move(outerTypes);
    templateDepth_ -= instance ? 1 : 0;
}

// --- structs, aliases and variables

void Sema::declareTemplate(const ast::Decl* decl) {
    const bool isVariable = decl->kind == ast::DeclKind::variables;
    const Name name = isVariable ? decl->variables[0]->name : decl->name;
    Symbol* known = lookupIn(name, space_);
    if (decl->isSpecialised) {
        if (known == nullptr || known->kind != SymbolKind::pattern) {
            error(decl->range,
                  "there is no template '" + std::string(name->text) + "' to specialise");
            return;
        }
        known->pattern->specialisations.push_back(decl);
        return;
    }
    if (known != nullptr) {
        const bool declared = known->kind == SymbolKind::pattern &&
                              known->pattern->primary->kind == ast::DeclKind::structure;
        if (!declared || (known->pattern->primary->isDefinition && decl->isDefinition)) {
            error(decl->range, "'" + std::string(name->text) + "' is declared twice");
            diagnostics_.note(known->range, "the other declaration is here");
        } else if (decl->isDefinition) {
            known->pattern->primary = decl;
        }
        return;
    }
    templates_.push_back(std::make_unique<Template>(Template{decl, {}, space_}));
    declare(SymbolKind::pattern, name, decl->range)->pattern = templates_.back().get();
}

// The specialisation that fits the arguments most closely, with what its own parameters stand for.
const ast::Decl* Sema::specialisation(const Template& pattern, const Bindings& arguments,
                                      Bindings& bindings) {
    const ast::Decl* best = pattern.primary;
    size_t fewest = SIZE_MAX;
    bindings = arguments;
    for (const auto* candidate : pattern.specialisations) {
        const auto parameters = Parameters(candidate->templateParameters);
        Bindings own(parameters.size());
        const Bindings flat = flattened(arguments);
        const bool expands = !candidate->arguments.empty() && candidate->arguments.back().expands;
        const Diagnostics::Muted muted(diagnostics_);
        const Context context(*this, pattern.space);
        bool fits = (expands || candidate->arguments.size() == flat.size()) &&
                    matchList(candidate->arguments, flat, parameters, own);
        for (size_t i = 0; fits && i < candidate->arguments.size(); ++i) {
            const auto& argument = candidate->arguments[i];
            // What holds none of the parameters must be the very type.
            if (argument.type != nullptr && !argument.expands &&
                !(argument.type->kind == ast::TypeSyntaxKind::named &&
                  parameterIndex(parameters, *argument.type->name))) {
                const Context inner(*this, parameterSpaceOfBound(parameters, own, pattern.space));
                fits = resolve(argument.type) == flat[i].type;
            }
        }
        if (fits && parameters.size() < fewest) {
            fewest = parameters.size();
            best = candidate;
            bindings = own;
        }
    }
    return best;
}

// As parameterSpace, for those parameters that are known already.
Space* Sema::parameterSpaceOfBound(Parameters parameters, const Bindings& bindings, Space* parent) {
    Space* space = parent;
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (bindings[i].known()) {
            space = parameterSpace(parameters.subspan(i, 1), {bindings[i]}, space);
        }
    }
    return space;
}

const Type* Sema::instantiateStruct(Template& pattern, const ast::QualifiedName& name) {
    const auto parameters = Parameters(pattern.primary->templateParameters);
    Instance key{.pattern = &pattern, .bindings = Bindings(parameters.size())};
    const uint32_t before = diagnostics_.errorCount();
    if (!bindGiven(name.arguments, parameters, key.bindings) ||
        !bindDefaults(parameters, key.bindings, pattern.space)) {
        if (diagnostics_.errorCount() == before) {
            error(name.range, "these are not the arguments that the template '" +
                                  std::string(name.name->text) + "' takes");
            diagnostics_.note(pattern.primary->range, "the template is here");
        }
        return nullptr;
    }
    for (const auto& instance : instances_) {
        if (instance.pattern == key.pattern && instance.bindings == key.bindings) {
            return instance.type;
        }
    }
    if (!spendInstance(name.range)) {
        return nullptr;
    }
    Bindings bindings;
    const ast::Decl* decl = specialisation(pattern, key.bindings, bindings);
    ++templateDepth_;
    Space* space = parameterSpace(decl->templateParameters, bindings, pattern.space);
    const Context context(*this, space);
    auto outerTypes = std::move(declaredTypes_);
    declaredTypes_.clear();
    const Type* result = nullptr;
    if (decl->kind == ast::DeclKind::alias) {
        result = resolve(decl->type);
        key.type = result;
        instances_.push_back(std::move(key));
    } else if (!decl->isDefinition) {
        error(name.range,
              "the template '" + std::string(name.name->text) + "' is declared but not defined");
    } else {
        std::string text = std::string(decl->name->text) + "<";
        const Bindings flat = flattened(key.bindings);
        for (size_t i = 0; i < flat.size(); ++i) {
            const auto& binding = flat[i];
            text += (i > 0 ? ", " : "") +
                    (binding.type != nullptr
                         ? toText(binding.type)
                         : std::to_string(static_cast<int64_t>(binding.value.value_or(0))));
        }
        Type* type = types_.makeStruct(names_.intern(text + ">"));
        result = key.type = type;
        const Instance instance = key;
        instances_.push_back(std::move(key));
        // Inside, the template's name without arguments is the instance itself.
        declare(SymbolKind::type, decl->name, decl->range)->type = type;
        defineStruct(decl, type, &instance);
    }
    declaredTypes_ = std::move(outerTypes);
    --templateDepth_;
    return result;
}

Symbol* Sema::instantiateVariable(Template& pattern, const ast::QualifiedName& name) {
    const auto parameters = Parameters(pattern.primary->templateParameters);
    Instance key{.pattern = &pattern, .bindings = Bindings(parameters.size())};
    if (!bindGiven(name.arguments, parameters, key.bindings) ||
        !bindDefaults(parameters, key.bindings, pattern.space)) {
        error(name.range, "these are not the arguments that the template '" +
                              std::string(name.name->text) + "' takes");
        return nullptr;
    }
    for (const auto& instance : instances_) {
        if (instance.pattern == key.pattern && instance.bindings == key.bindings) {
            return instance.symbol;
        }
    }
    if (!spendInstance(name.range)) {
        return nullptr;
    }
    const Context context(*this, parameterSpace(parameters, key.bindings, pattern.space));
    globalVariable(pattern.primary->variables[0]);
    key.symbol = lookupIn(name.name, space_);
    instances_.push_back(key);
    return key.symbol;
}

} // namespace msl
