// Structs: their members, layout, member functions and default values.
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

} // namespace msl
