// Structs: their members, layout, member functions and default values.
#include <algorithm>

#include "msl/sema/sema.h"

namespace msl {

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
    if (decl->isDefinition) {
        defineStruct(decl, type, nullptr);
    }
}

// `instance` says which template the struct is an instance of, where it is one.
void Sema::defineStruct(const ast::Decl* decl, Type* type, const Instance* instance) {
    recordStorage_.push_back(std::make_unique<StructRecord>());
    StructRecord* record = recordStorage_.back().get();
    records_[type] = record;
    record->constructors = decl->name;
    if (instance != nullptr) {
        record->pattern = const_cast<Template*>(static_cast<const Template*>(instance->pattern));
        record->arguments = instance->bindings;
    }
    record->space = arena_.make<Space>();
    record->space->name = decl->name;
    record->space->parent = space_;
    record->space->self = type;
    Space* const outer = space_;
    space_ = record->space;
    structFields(decl, type, *record);
    if (checkSize(type, decl->range)) {
        structMethods(decl, type, *record, instance != nullptr);
    }
    space_ = outer;
}

// Every member that is no function, and the layout.
void Sema::structFields(const ast::Decl* decl, Type* type, StructRecord& record) {
    FunctionState* const outerState = state_;
    std::vector<Field> fields;
    structBases(decl, record, fields);
    for (const auto* member : decl->members) {
        if (member->kind == ast::DeclKind::function) {
            continue;
        }
        state_ = nullptr;
        if (member->kind != ast::DeclKind::variables || member->isTemplate) {
            declaration(member);
            state_ = outerState;
            const auto made = declaredTypes_.find(member);
            if (member->kind == ast::DeclKind::structure && member->name == nullptr &&
                made != declaredTypes_.end()) {
                Field unnamed;
                unnamed.type = made->second;
                fields.push_back(unnamed);
            }
            continue;
        }
        if (member->typeDeclaration != nullptr) {
            declaration(member->typeDeclaration);
        }
        for (const auto* variable : member->variables) {
            if (variable->isStatic || variable->isConstexpr) {
                globalVariable(variable);
            }
        }
        state_ = outerState;
        for (const auto* variable : member->variables) {
            if (variable->isStatic || variable->isConstexpr) {
                continue;
            }
            const Type* fieldType = resolve(variable->type);
            if (fieldType == nullptr || !attributeNumbers(variable->attributes)) {
                continue;
            }
            if (fieldType->isVoid() || (fieldType->isStruct() && !fieldType->structure->complete) ||
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
                record.defaults.push_back({static_cast<uint32_t>(fields.size()), variable->init});
            }
            const bool reference = fieldType->isReference();
            if (reference) {
                fieldType =
                    types_.pointer(fieldType->element, fieldType->space, fieldType->constPointee);
            }
            if (decl->isUnion && fieldType->holdsResources()) {
                error(variable->range,
                      "a union cannot hold a member of the type '" + toText(fieldType) + "'");
                continue;
            }
            Field field;
            field.name = variable->name;
            field.type = fieldType;
            field.isReference = reference;
            fields.push_back(field);
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
    type->structure->isUnion = decl->isUnion;
    types_.completeStruct(type, fields);
    type->structure->declaration = decl;
}

// The bodies come last: they may use every member, wherever it stands. Those of a template's
// instance wait until they are called.
void Sema::structMethods(const ast::Decl* decl, Type* type, StructRecord& record, bool isInstance) {
    FunctionState* const outerState = state_;
    std::vector<std::pair<tree::Function*, const ast::Function*>> bodies;
    for (const auto* member : decl->members) {
        if (member->kind != ast::DeclKind::function || member->function->isDefaulted) {
            continue;
        }
        const auto& syntax = *member->function;
        Overload overload{.function = nullptr,
                          .pattern = &syntax,
                          .space = record.space,
                          .self = syntax.isStatic ? nullptr : type};
        if (!syntax.isTemplate) {
            state_ = nullptr;
            overload.function = makeFunction(syntax, overload.self);
            state_ = outerState;
            if (overload.function == nullptr) {
                continue;
            }
            bodies.emplace_back(overload.function, &syntax);
        }
        Member* slot = nullptr;
        for (auto& method : record.methods) {
            slot = method.name == syntax.name ? &method : slot;
        }
        if (slot == nullptr) {
            record.methods.push_back({syntax.name, static_cast<uint32_t>(overloads_.size())});
            overloads_.emplace_back();
            slot = &record.methods.back();
        }
        overloads_[slot->overloads].push_back(overload);
    }
    for (const auto& [function, syntax] : bodies) {
        if (syntax->body != nullptr &&
            (isInstance || unit_.hasKernels || function->result == nullptr)) {
            function->pending = true;
            function->space = record.space;
        } else if (syntax->body != nullptr) {
            analyseBody(*function, &record);
        }
    }
}

// What a constructor does before its body: the object with its default values, and what the
// members' initialisers say.
bool Sema::constructorStart(tree::Function& function, std::vector<tree::Stmt*>& items) {
    const auto& syntax = *function.syntax;
    const auto& inits = syntax.memberInits;
    const Type* type = function.self->type;
    tree::Stmt* object = makeStmt(tree::StmtKind::declare, syntax.range);
    object->variable = function.self;
    items.push_back(object);
    if (inits.size() == 1 && inits[0]->name == recordOf(type)->constructors) {
        // Another constructor makes the object.
        object->expr = fromList(type, inits[0]->init->items, {}, inits[0]->range,
                                inits[0]->initKind == ast::InitKind::brace);
        return object->expr != nullptr;
    }
    object->expr = memberDefaults(type, syntax.range);
    bool good = object->expr != nullptr;
    for (const auto* init : inits) {
        tree::Expr* target = nullptr;
        tree::Expr* source = initialMember(function, *init, target);
        if (source == nullptr) {
            good = false;
            continue;
        }
        tree::Expr* assignExpr = makeExpr(tree::ExprKind::assign, target->type, init->range);
        assignExpr->a = target;
        assignExpr->b = source;
        tree::Stmt* stmt = makeStmt(tree::StmtKind::expression, init->range);
        stmt->expr = finish(assignExpr);
        items.push_back(stmt);
    }
    return good;
}

// The value of a member, or of a base, in a constructor's list; `target` becomes the member.
tree::Expr* Sema::initialMember(const tree::Function& function, const ast::Variable& init,
                                tree::Expr*& target) {
    tree::Expr* self = variableExpr(function.self, init.range);
    const auto fields = function.self->type->structure->fields;
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const Field& item) {
        const auto* base = item.isBase ? recordOf(item.type) : nullptr;
        return item.name == init.name || (base != nullptr && base->constructors == init.name);
    });
    if (field != fields.end()) {
        target = fieldExpr(self, static_cast<uint32_t>(field - fields.begin()), init.range);
    } else {
        target = findField(self, init.name, init.range);
    }
    if (target == nullptr) {
        error(init.range, "there is no member '" + std::string(init.name->text) + "'");
        return nullptr;
    }
    const auto& given = init.init->items;
    if (field != fields.end() && field->isReference && given.size() == 1) {
        return referenceTo(field->type, value(given[0]));
    }
    if (given.empty()) {
        return defaultValue(target->type, init.range);
    }
    return fromList(target->type, given, {}, init.range, init.initKind == ast::InitKind::brace);
}

} // namespace msl
