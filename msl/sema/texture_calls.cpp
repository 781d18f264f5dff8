// Calls of the member functions of textures.
#include "msl/sema/sema.h"

namespace msl {

using tree::ExprKind;

// The arguments of a texture's member, brought to fixed places: 0 texture, 1 sampler, 2 coordinate,
// 3 array index, 4 compared value, 5 level or bias, 6 and 7 gradients, 8 offset. `index` says what
// 5 to 7 are: 0 nothing, 1 bias, 2 level, 3 gradients.
tree::Expr* Sema::textureCall(const ast::Expr* expr, tree::Expr* texture, Name name) {
    const Range range = expr->a->range;
    const auto* member = findTextureMember(name->text);
    if (member == nullptr) {
        error(range, "'" + toText(texture->type) + "' has no member function '" +
                         std::string(name->text) + "', or it is not supported");
        return nullptr;
    }
    const Type& type = *texture->type;
    static constexpr uint8_t kCoordinates[] = {1, 2, 3, 3, 2, 3};
    const uint32_t coordinates = kCoordinates[static_cast<size_t>(type.shape)];
    const bool cube =
        type.shape == TextureShape::textureCube || type.shape == TextureShape::textureCubeArray;
    const bool arrayed =
        type.shape == TextureShape::texture2dArray || type.shape == TextureShape::textureCubeArray;
    std::vector<tree::Expr*> items(9, nullptr);
    items[0] = texture;
    size_t next = 0;
    const auto& given = expr->items;
    tree::Expr* result = makeExpr(ExprKind::library, nullptr, range);
    result->library = member;
    const auto take = [&](size_t place, const Type* wanted, std::string_view what) {
        if (next >= given.size()) {
            error(range, "'" + std::string(name->text) + "' needs " + std::string(what));
            return false;
        }
        tree::Expr* argument = value(given[next]);
        if (argument == nullptr) {
            return false;
        }
        items[place] = convert(argument, wanted, given[next]->range, what);
        ++next;
        return items[place] != nullptr;
    };
    const bool sampling =
        member->special == Special::sample || member->special == Special::sampleCompare ||
        member->special == Special::gather || member->special == Special::gatherCompare;
    const bool compares =
        member->special == Special::sampleCompare || member->special == Special::gatherCompare;
    const Type* four = vectorType(type.element->kind, 4);
    if (sampling) {
        if (compares != type.depth && compares) {
            error(range, "only depth textures compare");
            return nullptr;
        }
        if (!take(1, samplerType(), "a sampler") ||
            !take(2, vectorType(TypeKind::floatType, coordinates), "a coordinate") ||
            (arrayed && !take(3, uintType(), "an array index")) ||
            (compares && !take(4, floatType(), "a value to compare with"))) {
            return nullptr;
        }
        while (next < given.size()) {
            const ast::Expr* option = given[next];
            const auto word =
                option->kind == ast::ExprKind::call && option->a->kind == ast::ExprKind::name
                    ? option->a->name->name->text
                    : std::string_view();
            const bool gradient = word.starts_with("gradient");
            if (word == "level" || word == "bias" || gradient) {
                const size_t count = gradient ? 2 : 1;
                if (option->items.size() != count) {
                    error(option->range,
                          "'" + std::string(word) + "' takes " + std::to_string(count) + " values");
                    return nullptr;
                }
                for (size_t i = 0; i < count; ++i) {
                    tree::Expr* operand = value(option->items[i]);
                    operand = operand == nullptr
                                  ? nullptr
                                  : convert(operand,
                                            gradient ? vectorType(TypeKind::floatType, coordinates)
                                                     : floatType(),
                                            option->items[i]->range, "the value");
                    if (operand == nullptr) {
                        return nullptr;
                    }
                    items[(gradient ? 6U : 5U) + i] = operand;
                }
                result->index = word == "bias" ? 1 : word == "level" ? 2 : 3;
                ++next;
                continue;
            }
            if (word == "min_lod_clamp") {
                error(option->range, "'min_lod_clamp' is not supported");
                return nullptr;
            }
            if (member->special == Special::gather && option->kind == ast::ExprKind::name &&
                !option->name->spaces.empty() && option->name->spaces.back()->text == "component") {
                const auto component = std::string_view("xyzw").find(option->name->name->text);
                if (component == std::string_view::npos) {
                    error(option->range, "a component is x, y, z or w");
                    return nullptr;
                }
                result->componentCount = static_cast<uint8_t>(component);
                ++next;
                continue;
            }
            if (cube || items[8] != nullptr) {
                break;
            }
            if (!take(8, vectorType(TypeKind::intType, coordinates), "an offset")) {
                return nullptr;
            }
            if (!evaluate(items[8]) && items[8]->kind != ExprKind::zero) {
                bool constant =
                    items[8]->kind == ExprKind::construct || items[8]->kind == ExprKind::convert;
                for (const auto* part : items[8]->items) {
                    constant = constant && evaluate(part).has_value();
                }
                if (!constant) {
                    error(items[8]->range, "an offset must be known when compiling");
                    return nullptr;
                }
            }
        }
        const bool one = type.depth && member->special != Special::gather &&
                         member->special != Special::gatherCompare;
        result->type = one ? type.element : four;
    } else if (member->special == Special::read) {
        if (cube) {
            error(range, "reading single texels of cube textures is not supported");
            return nullptr;
        }
        if (!take(2, vectorType(TypeKind::uintType, coordinates), "a coordinate") ||
            (arrayed && !take(3, uintType(), "an array index")) ||
            (next < given.size() && !take(5, uintType(), "a level"))) {
            return nullptr;
        }
        result->type = type.depth ? type.element : four;
    } else {
        if (next < given.size() && !take(5, uintType(), "a level")) {
            return nullptr;
        }
        const bool fits =
            member->special == Special::width || member->special == Special::mipLevels ||
            (member->special == Special::height && type.shape != TextureShape::texture1d) ||
            (member->special == Special::depth && type.shape == TextureShape::texture3d) ||
            (member->special == Special::arraySize && arrayed);
        if (!fits) {
            error(range, "'" + toText(&type) + "' has no '" + std::string(name->text) + "'");
            return nullptr;
        }
        result->type = uintType();
    }
    if (next < given.size()) {
        error(given[next]->range, "'" + std::string(name->text) + "' takes no such argument here");
        return nullptr;
    }
    result->a = texture;
    result->items = arena_.copy(items);
    return finish(result);
}

} // namespace msl
