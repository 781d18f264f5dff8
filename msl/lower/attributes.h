// Looking attributes up.
#pragma once

#include <span>
#include <string_view>

#include "msl/parser/ast.h"
#include "msl/types/type.h"

namespace msl {

inline const ast::Attribute* findAttribute(std::span<const ast::Attribute> attributes,
                                           std::string_view name) {
    for (const auto& attribute : attributes) {
        if (attribute.name->text == name) {
            return &attribute;
        }
    }
    return nullptr;
}

// What the source says of a struct's member; nothing where it is no variable of its own.
inline const ast::Variable* syntaxOfField(const Type* type, Name name) {
    const auto* decl = static_cast<const ast::Decl*>(type->structure->declaration);
    for (const auto* member : decl != nullptr ? decl->members : std::span<ast::Decl*>()) {
        for (const auto* variable : member->variables) {
            if (variable->name == name) {
                return variable;
            }
        }
    }
    return nullptr;
}

inline std::span<const ast::Attribute> attributesOfField(const Type* type, Name name) {
    const auto* variable = syntaxOfField(type, name);
    return variable != nullptr ? variable->attributes : std::span<ast::Attribute>();
}

inline Range rangeOfField(const Type* type, Name name, Range otherwise) {
    const auto* variable = syntaxOfField(type, name);
    return variable != nullptr ? variable->range : otherwise;
}

} // namespace msl
