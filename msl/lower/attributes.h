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

inline std::span<const ast::Attribute> attributesOfField(const Type* type, Name name) {
    const auto* decl = static_cast<const ast::Decl*>(type->structure->declaration);
    if (decl != nullptr) {
        for (const auto* member : decl->members) {
            for (const auto* variable : member->variables) {
                if (variable->name == name) {
                    return variable->attributes;
                }
            }
        }
    }
    return {};
}

} // namespace msl
