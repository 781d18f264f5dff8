#include "msl/library/unsupported.h"
#include "msl/sema/depth.h"
#include "msl/sema/sema.h"

namespace msl {

using ast::TypeSyntaxKind;

bool Sema::checkSize(const Type* type, Range range) {
    if (type->size <= kMaxTypeBytes && type->leaves <= kMaxTypeBytes / 4) {
        return true;
    }
    error(range, "the type has more than " + std::to_string(kMaxTypeBytes) + " bytes");
    return false;
}

const Type* Sema::resolveArray(const ast::TypeSyntax* syntax, const ast::Expr* init) {
    const Type* element = resolve(syntax->element);
    if (element == nullptr) {
        return nullptr;
    }
    if (element->isVoid() || element->isReference()) {
        error(syntax->range, "an array cannot hold '" + toText(element) + "'");
        return nullptr;
    }
    uint64_t length = 0;
    if (syntax->length != nullptr) {
        const auto value = integerConstant(syntax->length, "the length of an array");
        if (!value) {
            return nullptr;
        }
        if (*value <= 0 || *value > kMaxArrayLength) {
            error(syntax->length->range, "an array of length " + std::to_string(*value) +
                                             " is not within 1 and " +
                                             std::to_string(kMaxArrayLength));
            return nullptr;
        }
        length = static_cast<uint64_t>(*value);
    } else if (init != nullptr && init->kind == ast::ExprKind::list) {
        length = expandItems(init->items).size();
        if (length == 0 || length > kMaxArrayLength) {
            error(init->range, "an array needs at least one element");
            return nullptr;
        }
    } else if (element->isArray() && element->length == 0) {
        error(syntax->range, "only the first dimension of an array may be left open");
        return nullptr;
    }
    if (length * element->size > kMaxTypeBytes || length * element->leaves > kMaxTypeBytes / 4) {
        error(syntax->range, "the type has more than " + std::to_string(kMaxTypeBytes) + " bytes");
        return nullptr;
    }
    return types_.array(element, static_cast<uint32_t>(length));
}

const Type* Sema::resolve(const ast::TypeSyntax* syntax) {
    const DepthGuard guard(depth_);
    if (tooDeep(syntax->range)) {
        return nullptr;
    }
    switch (syntax->kind) {
    case TypeSyntaxKind::builtin:
        return syntax->builtin;
    case TypeSyntaxKind::named:
        return resolveNamed(syntax);
    case TypeSyntaxKind::declared: {
        const auto known = declaredTypes_.find(syntax->declared);
        if (known != declaredTypes_.end()) {
            return known->second;
        }
        if (syntax->declared->isDefinition || syntax->declared->name == nullptr) {
            declaration(syntax->declared);
            const auto made = declaredTypes_.find(syntax->declared);
            return made == declaredTypes_.end() ? nullptr : made->second;
        }
        const Symbol* symbol = lookup(syntax->declared->name);
        if (symbol == nullptr && syntax->declared->kind == ast::DeclKind::enumeration &&
            syntax->declared->type != nullptr) {
            // enum Name : type; declares what is defined later.
            declaration(syntax->declared);
            symbol = lookup(syntax->declared->name);
        }
        if (symbol == nullptr || symbol->kind != SymbolKind::type) {
            error(syntax->declared->range,
                  "there is no type named '" + std::string(syntax->declared->name->text) + "'");
            return nullptr;
        }
        return symbol->type;
    }
    case TypeSyntaxKind::array:
        return resolveArray(syntax, nullptr);
    case TypeSyntaxKind::pointer:
    case TypeSyntaxKind::reference: {
        const Type* element = resolve(syntax->element);
        if (element == nullptr) {
            return nullptr;
        }
        if (element->isReference()) {
            error(syntax->range, "there are no pointers or references to references");
            return nullptr;
        }
        const auto space = syntax->element->space == AddressSpace::none ? AddressSpace::thread
                                                                        : syntax->element->space;
        const bool isConst = syntax->element->isConst || space == AddressSpace::constant;
        return syntax->kind == TypeSyntaxKind::pointer ? types_.pointer(element, space, isConst)
                                                       : types_.reference(element, space, isConst);
    }
    case TypeSyntaxKind::typeOf: {
        const auto* operand = expression(syntax->operand);
        return operand == nullptr ? nullptr : operand->type;
    }
    case TypeSyntaxKind::automatic:
        error(syntax->range, "'auto' has no meaning here");
        return nullptr;
    }
    return nullptr;
}

const Type* Sema::resolveNamed(const ast::TypeSyntax* syntax) {
    const auto& name = *syntax->name;
    Symbol* const symbol = lookup(name);
    if (symbol != nullptr && symbol->kind == SymbolKind::pattern) {
        return instantiateStruct(*symbol->pattern, name);
    }
    if (symbol != nullptr && symbol->kind == SymbolKind::type && name.hasArguments) {
        const auto* record = recordOf(symbol->type);
        if (record != nullptr && record->pattern != nullptr) {
            return instantiateStruct(*record->pattern, name);
        }
    }
    if (name.hasArguments && (symbol == nullptr || symbol->kind != SymbolKind::type)) {
        return resolveTemplate(name);
    }
    if (symbol != nullptr) {
        if (symbol->isPack) {
            error(name.range, "'" + std::string(name.name->text) +
                                  "' is a parameter pack; '...' behind it expands it");
            return nullptr;
        }
        if (symbol->kind == SymbolKind::type) {
            return symbol->type;
        }
        error(name.range, "'" + std::string(name.name->text) + "' is not a type");
        return nullptr;
    }
    if (name.spaces.empty() || isMetalSpace(name)) {
        if (const Type* builtin = findBuiltinType(name.name->text)) {
            return builtin;
        }
    }
    reportUnknown(name, "type");
    return nullptr;
}

// Textures, vec<T, n>, matrix<T, c, r> and array<T, n>.
const Type* Sema::resolveTemplate(const ast::QualifiedName& name) {
    const auto text = name.name->text;
    const auto argument = [&](size_t i) -> const Type* {
        if (i >= name.arguments.size() || name.arguments[i].type == nullptr) {
            error(name.range, "'" + std::string(text) + "' needs a type in its '<>'");
            return nullptr;
        }
        return resolve(name.arguments[i].type);
    };
    const auto number = [&](size_t i) -> std::optional<int64_t> {
        if (i >= name.arguments.size() || name.arguments[i].value == nullptr) {
            error(name.range, "'" + std::string(text) + "' needs a number in its '<>'");
            return std::nullopt;
        }
        return integerConstant(name.arguments[i].value, "a template argument");
    };
    if (text == "vec" || text == "array" || text == "matrix") {
        const Type* element = argument(0);
        const auto count = element == nullptr ? std::nullopt : number(1);
        if (!count) {
            return nullptr;
        }
        if (text == "array") {
            if (*count <= 0 || *count > kMaxArrayLength ||
                static_cast<uint64_t>(*count) * element->size > kMaxTypeBytes) {
                error(name.range, "an array of length " + std::to_string(*count) +
                                      " is not within the bounds of arrays");
                return nullptr;
            }
            return types_.array(element, static_cast<uint32_t>(*count));
        }
        const auto rows = text == "matrix" ? number(2) : count;
        if (!rows || *count < 2 || *count > 4 || *rows < 2 || *rows > 4 || !element->isScalar() ||
            (text == "matrix" && !element->isFloating())) {
            error(name.range, "there is no such vector or matrix type");
            return nullptr;
        }
        return text == "vec" ? vectorType(element->kind, static_cast<uint32_t>(*count))
                             : matrixType(element->kind, static_cast<uint32_t>(*count),
                                          static_cast<uint32_t>(*rows));
    }
    if (text == "atomic") {
        const Type* element = argument(0);
        if (element != nullptr && element != intType() && element != uintType()) {
            error(name.range, "atomics hold int or uint, not '" + toText(element) + "'");
            return nullptr;
        }
        return element == nullptr ? nullptr : atomicType(element->isSigned());
    }
    return resolveTexture(name);
}

const Type* Sema::resolveTexture(const ast::QualifiedName& name) {
    const auto text = name.name->text;
    struct TextureName {
        std::string_view name;
        TextureShape shape;
        bool depth;
    };
    static constexpr TextureName kTextures[] = {
        {"texture1d", TextureShape::texture1d, false},
        {"texture2d", TextureShape::texture2d, false},
        {"texture3d", TextureShape::texture3d, false},
        {"texturecube", TextureShape::textureCube, false},
        {"texture2d_array", TextureShape::texture2dArray, false},
        {"texturecube_array", TextureShape::textureCubeArray, false},
        {"texture1d_array", TextureShape::texture1dArray, false},
        {"texture2d_ms", TextureShape::texture2dMultisample, false},
        {"texture2d_ms_array", TextureShape::texture2dMultisampleArray, false},
        {"texture_buffer", TextureShape::textureBuffer, false},
        {"depth2d", TextureShape::texture2d, true},
        {"depth2d_ms", TextureShape::texture2dMultisample, true},
        {"depth2d_ms_array", TextureShape::texture2dMultisampleArray, true},
        {"depthcube", TextureShape::textureCube, true},
        {"depth2d_array", TextureShape::texture2dArray, true},
        {"depthcube_array", TextureShape::textureCubeArray, true},
    };
    for (const auto& texture : kTextures) {
        if (texture.name != text) {
            continue;
        }
        if (name.arguments.empty() || name.arguments[0].type == nullptr) {
            error(name.range, "'" + std::string(text) + "' needs a type in its '<>'");
            return nullptr;
        }
        const Type* component = resolve(name.arguments[0].type);
        if (component == nullptr) {
            return nullptr;
        }
        if (!component->isScalar() || component->isBool() || component->size > 4) {
            error(name.range,
                  "a texture holds half, float, int or uint, not '" + toText(component) + "'");
            return nullptr;
        }
        auto access = TextureAccess::sample;
        if (name.arguments.size() > 1) {
            const auto* value = name.arguments[1].value;
            const auto word = value != nullptr && value->kind == ast::ExprKind::name
                                  ? value->name->name->text
                                  : std::string_view();
            if (word == "read") {
                access = TextureAccess::read;
            } else if (word == "write") {
                access = TextureAccess::write;
            } else if (word == "read_write") {
                access = TextureAccess::readWrite;
            } else if (word != "sample") {
                error(name.range, "a texture's access is sample, read, write or read_write");
                return nullptr;
            }
        }
        return types_.texture(texture.shape, texture.depth, component, access);
    }
    const auto reason = unsupportedReason(text);
    error(name.range, !reason.empty() ? std::string(reason)
                                      : "the type '" + std::string(text) + "<>' is not supported");
    return nullptr;
}

} // namespace msl
