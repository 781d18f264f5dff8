// Functions: their declarations and bodies.
#include <algorithm>

#include "msl/sema/context.h"

namespace msl {

namespace {

// The Metal Shading Language specification, chapter 5, and what C++ and its compilers add.
constexpr std::string_view kAttributes[] = {
    "alias_implicit_groups",
    "always_inline",
    "amplification_count",
    "amplification_id",
    "attribute",
    "barycentric_coord",
    "base_instance",
    "base_vertex",
    "buffer",
    "center_no_perspective",
    "center_perspective",
    "centroid_no_perspective",
    "centroid_perspective",
    "clip_distance",
    "color",
    "deprecated",
    "depth",
    "dispatch_quadgroups_per_threadgroup",
    "early_fragment_tests",
    "fallthrough",
    "flat",
    "fragment",
    "front_facing",
    "function_constant",
    "host_name",
    "id",
    "index",
    "instance_id",
    "intersection",
    "invariant",
    "kernel",
    "max_total_threadgroups_per_mesh_grid",
    "max_total_threads_per_threadgroup",
    "maybe_unused",
    "mesh",
    "nodiscard",
    "noreturn",
    "object",
    "origin",
    "patch",
    "patch_id",
    "payload",
    "point_coord",
    "point_size",
    "position",
    "position_in_patch",
    "primitive_culled",
    "primitive_id",
    "raster_order_group",
    "render_target_array_index",
    "sample_id",
    "sample_mask",
    "sample_no_perspective",
    "sample_perspective",
    "sampler",
    "shared",
    "stage_in",
    "stitchable",
    "texture",
    "thread_index_in_quadgroup",
    "thread_index_in_simdgroup",
    "threadgroup",
    "threads_per_simdgroup",
    "user",
    "vertex",
    "vertex_id",
    "viewport_array_index",
    "visible",
};
static_assert(std::is_sorted(std::begin(kAttributes), std::end(kAttributes)));

} // namespace

bool Sema::sameParameters(const tree::Function& a, const tree::Function& b) const {
    return std::equal(a.parameters.begin(), a.parameters.end(), b.parameters.begin(),
                      b.parameters.end(), [](const auto* left, const auto* right) {
                          return left->type == right->type &&
                                 left->isReference == right->isReference &&
                                 (!left->isReference ||
                                  (left->space == right->space && left->isConst == right->isConst));
                      });
}

// A parameter of a function, and what it is where none is given.
tree::Variable* Sema::makeParameter(tree::Function& function, const ast::Variable& syntax,
                                    tree::Expr*& init) {
    const bool reference = syntax.type->kind == ast::TypeSyntaxKind::reference;
    const auto* named = reference ? syntax.type->element : syntax.type;
    const Type* type = resolve(named);
    if (type == nullptr || !attributeNumbers(syntax.attributes)) {
        return nullptr;
    }
    if (type->isVoid() || (type->isStruct() && !type->structure->complete && !reference &&
                           function.syntax->body != nullptr)) {
        error(syntax.range, "a parameter cannot have the type '" + toText(type) + "'");
        return nullptr;
    }
    if (!reference && type->isArray() && named->kind == ast::TypeSyntaxKind::array &&
        !type->element->isResource()) {
        type = types_.pointer(
            type->element, named->space == AddressSpace::none ? AddressSpace::thread : named->space,
            named->isConst || named->space == AddressSpace::constant);
    }
    auto* variable = makeVariable(syntax, type, tree::VariableKind::parameter);
    variable->function = &function;
    variable->isReference = reference;
    if (reference) {
        variable->space = named->space == AddressSpace::none ? AddressSpace::thread : named->space;
        variable->isConst = named->isConst || variable->space == AddressSpace::constant;
    } else if (type->isResource()) {
        variable->isConst = true;
    }
    if (syntax.init != nullptr) {
        init = initialise(type, syntax.init, ast::InitKind::equal);
        return init != nullptr ? variable : nullptr;
    }
    return variable;
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
    function->isExplicit = syntax.isExplicit;
    function->selfSpace = syntax.selfSpace;
    bool good = syntax.trailingResult || functionResult(*function, self);
    good = attributeNumbers(syntax.attributes) && good;
    uint32_t slot = 0;
    std::vector<tree::Variable*> parameters;
    std::vector<tree::Expr*> defaults;
    for (const auto* parameter : syntax.parameters) {
        const auto outerIndex = packIndex_;
        const size_t count = parameter->isPack ? parameterPackLength(*parameter).value_or(0) : 1;
        for (size_t i = 0; i < count; ++i) {
            packIndex_ = parameter->isPack ? std::optional(i) : outerIndex;
            tree::Expr* init = nullptr;
            auto* variable = makeParameter(*function, *parameter, init);
            packIndex_ = outerIndex;
            if (variable == nullptr) {
                good = false;
                continue;
            }
            variable->slot = slot++;
            if (init == nullptr) {
                function->requiredParameters = static_cast<uint32_t>(parameters.size() + 1);
            }
            parameters.push_back(variable);
            defaults.push_back(init);
        }
    }
    if (self != nullptr) {
        auto* object = arena_.make<tree::Variable>();
        object->range = syntax.range;
        object->type = self;
        object->kind = tree::VariableKind::parameter;
        object->isReference = !syntax.isConstructor;
        object->isConst = syntax.isConst;
        object->space =
            syntax.selfSpace == AddressSpace::none ? AddressSpace::thread : syntax.selfSpace;
        object->function = function;
        object->slot = slot++;
        function->self = object;
    }
    function->variableCount = slot;
    function->parameters = arena_.copy(parameters);
    function->defaults = arena_.copy(defaults);
    if (good && syntax.trailingResult) {
        good = trailingResult(*function, self);
    }
    return good ? function : nullptr;
}

// The type that the function returns. One that is written 'auto' is known when the body has been
// analysed, and nothing until then.
bool Sema::functionResult(tree::Function& function, const Type* self) {
    const auto& syntax = *function.syntax;
    if (syntax.isConstructor) {
        function.result = self;
        return true;
    }
    if (syntax.result->kind == ast::TypeSyntaxKind::automatic) {
        return true;
    }
    function.result = resolve(syntax.result);
    if (function.result == nullptr) {
        return false;
    }
    if (function.result->isReference()) {
        function.returnsReference = true;
        function.resultConst = function.result->constPointee;
        function.resultSpace = function.result->space;
        function.result = function.result->element;
    } else if (function.result->isArray() && syntax.result->kind == ast::TypeSyntaxKind::array) {
        error(syntax.range, "a function cannot return '" + toText(function.result) + "'");
        return false;
    }
    return true;
}

// A result's type behind the parameters, which it may name.
bool Sema::trailingResult(tree::Function& function, const Type* self) {
    FunctionState* const outerState = state_;
    FunctionState state;
    state.function = &function;
    state_ = &state;
    const size_t mark = scope_.size();
    declareParameters(function);
    const bool good = functionResult(function, self);
    closeScope(mark);
    state_ = outerState;
    return good;
}

void Sema::declareParameters(tree::Function& function) {
    const auto& written = function.syntax->parameters;
    const size_t plain = written.empty() || !written.back()->isPack ? function.parameters.size()
                                                                    : written.size() - 1;
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        auto* parameter = function.parameters[i];
        parameter->function = &function;
        if (parameter->name == nullptr || i >= plain) {
            continue;
        }
        Symbol* previous = lookup(parameter->name);
        if (previous != nullptr && previous->space == nullptr && sameScope(*previous)) {
            error(parameter->range,
                  "the parameter '" + std::string(parameter->name->text) + "' is declared twice");
        }
        declare(SymbolKind::variable, parameter->name, parameter->range)->variable = parameter;
    }
    if (!written.empty() && written.back()->isPack && written.back()->name != nullptr) {
        const auto elements = function.parameters.subspan(plain);
        const Symbol* pack = declarePack(SymbolKind::variable, written.back()->name,
                                         written.back()->range, elements.size());
        for (size_t i = 0; i < elements.size(); ++i) {
            pack->pack[i]->variable = elements[i];
        }
    }
}

void Sema::functionDeclaration(const ast::Decl* decl) {
    const auto& syntax = *decl->function;
    if (syntax.stage == ast::FunctionStage::kernel) {
        diagnostics_.warning(syntax.range, "the kernel '" + std::string(syntax.name->text) +
                                               "' is skipped: only vertex and fragment "
                                               "functions are compiled");
        unit_.hasKernels = true;
        return;
    }
    if (!syntax.qualifiedName->spaces.empty()) {
        if (Space* space = spaceOf(*syntax.qualifiedName)) {
            memberDefinition(decl, space);
        }
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
        // A specialisation of a function template is an overload, which wins where it fits as well.
        if (syntax.templateParameters.empty()) {
            function = makeFunction(syntax, nullptr);
        } else if (syntax.body != nullptr) {
            overloads_[known->overloads].push_back(
                {.function = nullptr, .pattern = &syntax, .space = space_, .self = nullptr});
        }
        if (function == nullptr) {
            return;
        }
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
        const bool called = overload.function->pending;
        *overload.function = *function;
        overload.function->defaults = defaults;
        overload.function->requiredParameters = required;
        if (called) {
            analyseBody(*overload.function, nullptr);
            entryPoint(*overload.function);
        } else {
            define(*overload.function);
        }
        return;
    }
    overloads_[known->overloads].push_back(
        {.function = function, .pattern = &syntax, .space = space_, .self = nullptr});
    if (syntax.body != nullptr) {
        define(*function);
    }
}

// Beside kernels, a function is analysed when it is first called: it may be one that only they
// call, and use what only they have.
void Sema::define(tree::Function& function) {
    if (unit_.hasKernels && function.stage == ast::FunctionStage::none &&
        function.result != nullptr) {
        function.pending = true;
        function.space = space_;
        return;
    }
    analyseBody(function, nullptr);
    entryPoint(function);
}

// A function of a struct or namespace that is defined outside it.
void Sema::memberDefinition(const ast::Decl* decl, Space* space) {
    const auto& syntax = *decl->function;
    if (space->self == nullptr) {
        const Context context(*this, space);
        ast::Function inside = syntax;
        auto* name = arena_.make<ast::QualifiedName>(*syntax.qualifiedName);
        name->spaces = {};
        inside.qualifiedName = name;
        ast::Decl* moved = arena_.make<ast::Decl>(*decl);
        moved->function = arena_.make<ast::Function>(inside);
        functionDeclaration(moved);
        return;
    }
    const Context context(*this, space);
    const auto* method = methodOf(space->self, syntax.name);
    for (size_t i = 0; method != nullptr && i < overloads_[method->overloads].size(); ++i) {
        auto* declared = overloads_[method->overloads][i].function;
        if (declared == nullptr || declared->syntax->body != nullptr) {
            continue;
        }
        auto* function = makeFunction(syntax, declared->self != nullptr ? space->self : nullptr);
        if (function == nullptr) {
            return;
        }
        if (!sameParameters(*declared, *function) || declared->isConst != function->isConst) {
            continue;
        }
        function->defaults = declared->defaults;
        function->requiredParameters = declared->requiredParameters;
        *declared = *function;
        analyseBody(*declared, recordOf(space->self));
        return;
    }
    error(syntax.range, "'" + toText(space->self) + "' declares no such function '" +
                            std::string(syntax.name->text) + "'");
}

// Attributes that take a number take any constant expression.
bool Sema::attributeNumbers(std::span<ast::Attribute> attributes) {
    static constexpr std::string_view kNumbered[] = {
        "attribute", "buffer", "color", "function_constant", "id", "index", "sampler", "texture"};
    for (auto& attribute : attributes) {
        const auto text = attribute.name->text;
        if (templateDepth_ == 0 &&
            !std::binary_search(std::begin(kAttributes), std::end(kAttributes), text)) {
            diagnostics_.warning(attribute.range,
                                 "there is no attribute '[[" + std::string(text) + "]]'");
            suggest(kAttributes, text, attribute.range);
        }
        const bool numbered = std::find(std::begin(kNumbered), std::end(kNumbered),
                                        attribute.name->text) != std::end(kNumbered);
        if (!numbered || attribute.argument == nullptr) {
            continue;
        }
        if (attribute.name->text == "function_constant" && attribute.word != nullptr) {
            continue; // on a parameter: whether it is there at all
        }
        const auto number = integerConstant(attribute.argument, "this number");
        if (!number) {
            return false;
        }
        if (*number < 0 || *number > UINT16_MAX) {
            error(attribute.range, "'[[" + std::string(attribute.name->text) + "]]' cannot be " +
                                       std::to_string(*number));
            return false;
        }
        attribute.hasNumber = true;
        attribute.number = static_cast<uint32_t>(*number);
    }
    return true;
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
    FunctionState state;
    state.function = &function;
    state.result = syntax.isConstructor ? voidType() : function.result;
    state.deducedResult = state.result == nullptr;
    function.pending = false;
    state.record = record;
    state.slots = function.variableCount;
    state_ = &state;
    const size_t mark = scope_.size();
    const size_t outerStart = scopeStart_;
    scopeStart_ = mark;
    declareParameters(function);
    std::vector<tree::Stmt*> items;
    const bool good = !syntax.isConstructor || constructorStart(function, items);
    tree::Stmt* body = compound(syntax.body);
    if (body != nullptr && good) {
        items.push_back(body);
        function.body = items.size() == 1 ? body : block(items, syntax.range);
        if (state.deducedResult && state.result == nullptr) {
            state.result = function.result = voidType();
        }
        if (!state.result->isVoid() && !body->mayReturn) {
            error(syntax.range, "the function '" + std::string(syntax.name->text) + "' returns '" +
                                    toText(state.result) + "' but has no 'return'");
        }
    }
    function.variableCount = state.slots;
    warnAboutFunction(function);
    closeScope(mark);
    scopeStart_ = outerStart;
    state_ = outerState;
}

} // namespace msl
