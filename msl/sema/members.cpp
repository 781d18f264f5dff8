// Members by name: a struct's own, those of its unnamed members, and those of its bases.
#include "msl/sema/sema.h"

namespace msl {

// The object's member as the source names it; nothing where it has none.
tree::Expr* Sema::findField(tree::Expr* object, Name name, Range range) {
    const auto fields = object->type->structure->fields;
    for (uint32_t i = 0; i < fields.size(); ++i) {
        if (fields[i].name == name && !fields[i].isBase) {
            return memberOf(object, i, range);
        }
    }
    for (uint32_t i = 0; i < fields.size(); ++i) {
        if (fields[i].name != nullptr && !fields[i].isBase) {
            continue;
        }
        if (tree::Expr* found = findField(fieldExpr(object, i, range), name, range)) {
            return found;
        }
    }
    return nullptr;
}

// The member functions of that name. `owner` becomes the struct, or the base of it, that has them.
const Sema::Member* Sema::findMethod(const Type* type, Name name, const Type*& owner) const {
    if (const auto* own = methodOf(type, name)) {
        owner = type;
        return own;
    }
    if (type->isStruct()) {
        for (const auto& field : type->structure->fields) {
            const auto* found = field.isBase ? findMethod(field.type, name, owner) : nullptr;
            if (found != nullptr) {
                return found;
            }
        }
    }
    return nullptr;
}

bool Sema::derivesFrom(const Type* type, const Type* base) const {
    if (!type->isStruct() || !base->isStruct() || type == base) {
        return false;
    }
    for (const auto& field : type->structure->fields) {
        if (field.isBase && (field.type == base || derivesFrom(field.type, base))) {
            return true;
        }
    }
    return false;
}

// The part of an object that is its base; the object itself where it is of that type already.
tree::Expr* Sema::asBase(tree::Expr* object, const Type* base) {
    const auto fields =
        object->type->isStruct() ? object->type->structure->fields : std::span<Field>();
    for (uint32_t i = 0; i < fields.size() && object->type != base; ++i) {
        if (fields[i].isBase && (fields[i].type == base || derivesFrom(fields[i].type, base))) {
            return asBase(fieldExpr(object, i, object->range), base);
        }
    }
    return object;
}

// The bases of a struct, which lie in front of its own members.
void Sema::structBases(const ast::Decl* decl, StructRecord& record, std::vector<Field>& fields) {
    std::vector<Space*> spaces;
    for (const auto* syntax : decl->bases) {
        const Type* base = resolve(syntax);
        if (base == nullptr) {
            continue;
        }
        if (!base->isStruct() || !base->structure->complete || base->structure->isUnion) {
            error(syntax->range, "'" + toText(base) + "' cannot be the base of a struct");
            continue;
        }
        Field field;
        field.name = base->structure->name;
        field.type = base;
        field.isBase = true;
        fields.push_back(field);
        spaces.push_back(recordOf(base)->space);
    }
    record.space->bases = arena_.copy(spaces);
}

} // namespace msl
