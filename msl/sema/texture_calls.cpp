// Calls of the member functions of textures.
#include <algorithm>

#include "msl/sema/texture_call.h"

namespace msl {

using tree::ExprKind;

tree::Expr* Sema::textureCall(const ast::Expr* expr, tree::Expr* texture, Name name) {
    const auto* member = findTextureMember(name->text);
    if (member == nullptr) {
        error(expr->a->range, "'" + toText(texture->type) + "' has no member function '" +
                                  std::string(name->text) + "', or it is not supported");
        suggest(textureMemberNames(), name->text, expr->a->range);
        return nullptr;
    }
    return TextureCall(*this, expr, texture, *member).analyse();
}

Sema::TextureCall::TextureCall(Sema& sema, const ast::Expr* expr, tree::Expr* texture,
                               const LibraryFunction& member)
    : sema_(sema), given_(expr->items), range_(expr->a->range), type_(*texture->type),
      member_(member), items_(tree::kTextureItems, nullptr) {
    static constexpr uint8_t kCoordinates[] = {1, 2, 3, 3, 2, 3, 1, 2, 2, 1};
    coordinates_ = kCoordinates[static_cast<size_t>(type_.shape)];
    using enum TextureShape;
    cube_ = type_.shape == textureCube || type_.shape == textureCubeArray;
    arrayed_ = type_.shape == texture2dArray || type_.shape == textureCubeArray ||
               type_.shape == texture1dArray || type_.shape == texture2dMultisampleArray;
    multisampled_ = type_.shape == texture2dMultisample || type_.shape == texture2dMultisampleArray;
    items_[tree::TextureItem::texture] = texture;
    result_ = sema.makeExpr(ExprKind::library, nullptr, range_);
    result_->library = &member;
}

tree::Expr* Sema::TextureCall::analyse() {
    bool good = false;
    switch (member_.special) {
    case Special::sample:
    case Special::sampleCompare:
    case Special::gather:
    case Special::gatherCompare:
        good = sampling();
        break;
    case Special::read:
        good = reading();
        break;
    case Special::write:
        good = writing();
        break;
    case Special::clampedLod:
    case Special::unclampedLod:
        good = take(tree::TextureItem::sampler, samplerType(), "a sampler") &&
               take(tree::TextureItem::coordinate, vectorType(TypeKind::floatType, coordinates_),
                    "a coordinate");
        result_->type = floatType();
        break;
    case Special::fence:
        good = true;
        result_->type = voidType();
        break;
    default:
        good = query();
        break;
    }
    if (!good) {
        return nullptr;
    }
    if (next_ < given_.size()) {
        sema_.error(given_[next_]->range,
                    "'" + std::string(member_.name) + "' takes no such argument here");
        return nullptr;
    }
    result_->a = items_[tree::TextureItem::texture];
    result_->items = sema_.arena_.copy(items_);
    return sema_.finish(result_);
}

bool Sema::TextureCall::take(size_t place, const Type* wanted, std::string_view what) {
    if (next_ >= given_.size()) {
        sema_.error(range_, "'" + std::string(member_.name) + "' needs " + std::string(what));
        return false;
    }
    const ast::Expr* syntax = given_[next_];
    tree::Expr* argument =
        syntax->kind == ast::ExprKind::list
            ? sema_.fromList(wanted, syntax->items, syntax->designators, syntax->range, true)
            : sema_.value(syntax);
    if (argument == nullptr) {
        return false;
    }
    items_[place] = sema_.convert(argument, wanted, syntax->range, what);
    ++next_;
    return items_[place] != nullptr;
}

bool Sema::TextureCall::sampling() {
    const bool compares =
        member_.special == Special::sampleCompare || member_.special == Special::gatherCompare;
    if (compares && !type_.depth) {
        sema_.error(range_, "only depth textures compare");
        return false;
    }
    if (multisampled_ || type_.shape == TextureShape::textureBuffer ||
        type_.access != TextureAccess::sample) {
        sema_.error(range_, "'" + toText(&type_) + "' is read, not sampled" +
                                (multisampled_ || type_.shape == TextureShape::textureBuffer
                                     ? ""
                                     : ": its access is not access::sample"));
        return false;
    }
    const Type* floats = vectorType(TypeKind::floatType, coordinates_);
    if (!take(tree::TextureItem::sampler, samplerType(), "a sampler") ||
        !take(tree::TextureItem::coordinate, floats, "a coordinate") ||
        (arrayed_ && !take(tree::TextureItem::layer, uintType(), "an array index")) ||
        (compares && !take(tree::TextureItem::compared, floatType(), "a value to compare with"))) {
        return false;
    }
    while (next_ < given_.size()) {
        const ast::Expr* option = given_[next_];
        const auto word =
            option->kind == ast::ExprKind::call && option->a->kind == ast::ExprKind::name
                ? option->a->name->name->text
                : std::string_view();
        if (word == "level" || word == "bias" || word == "min_lod_clamp" ||
            word.starts_with("gradient")) {
            if (!lodOption(option, word)) {
                return false;
            }
        } else if (option->kind == ast::ExprKind::name && !option->name->spaces.empty() &&
                   option->name->spaces.back()->text == "component" &&
                   member_.special == Special::gather) {
            const auto component = std::string_view("xyzw").find(option->name->name->text);
            if (component == std::string_view::npos) {
                sema_.error(option->range, "a component is x, y, z or w");
                return false;
            }
            result_->componentCount = static_cast<uint8_t>(component);
            ++next_;
        } else if (cube_ || items_[tree::TextureItem::offset] != nullptr) {
            break;
        } else if (!offsetOption()) {
            return false;
        }
    }
    const bool gathers =
        member_.special == Special::gather || member_.special == Special::gatherCompare;
    result_->type = type_.depth && !gathers ? type_.element : four();
    return true;
}

// level(x), bias(x), min_lod_clamp(x) or gradient2d(x, y).
bool Sema::TextureCall::lodOption(const ast::Expr* option, std::string_view word) {
    const bool gradient = word.starts_with("gradient");
    const size_t count = gradient ? 2 : 1;
    if (option->items.size() != count) {
        sema_.error(option->range,
                    "'" + std::string(word) + "' takes " + std::to_string(count) + " values");
        return false;
    }
    const size_t place = gradient                  ? tree::TextureItem::gradientX
                         : word == "min_lod_clamp" ? tree::TextureItem::lodClamp
                                                   : tree::TextureItem::level;
    for (size_t i = 0; i < count; ++i) {
        tree::Expr* operand = sema_.value(option->items[i]);
        const Type* wanted = gradient ? vectorType(TypeKind::floatType, coordinates_) : floatType();
        operand = operand == nullptr
                      ? nullptr
                      : sema_.convert(operand, wanted, option->items[i]->range, "the value");
        if (operand == nullptr) {
            return false;
        }
        items_[place + i] = operand;
    }
    if (word != "min_lod_clamp") {
        result_->index = word == "bias" ? 1 : word == "level" ? 2 : 3;
    }
    ++next_;
    return true;
}

bool Sema::TextureCall::offsetOption() {
    if (!take(tree::TextureItem::offset, vectorType(TypeKind::intType, coordinates_),
              "an offset")) {
        return false;
    }
    const tree::Expr* offset = items_[tree::TextureItem::offset];
    if (sema_.evaluate(offset) || offset->kind == ExprKind::zero) {
        return true;
    }
    bool constant = offset->kind == ExprKind::construct || offset->kind == ExprKind::convert ||
                    (offset->kind == ExprKind::variable && offset->isConst);
    for (const auto* part : offset->items) {
        constant = constant && sema_.evaluate(part).has_value();
    }
    if (!constant) {
        sema_.error(offset->range, "an offset must be known when compiling");
    }
    return constant;
}

// The texel's place, which reading and writing name alike.
bool Sema::TextureCall::texel() {
    if (cube_) {
        return take(tree::TextureItem::coordinate, vectorType(TypeKind::uintType, 2),
                    "a coordinate") &&
               take(tree::TextureItem::face, uintType(), "a face") &&
               (!arrayed_ || take(tree::TextureItem::layer, uintType(), "an array index"));
    }
    return take(tree::TextureItem::coordinate, vectorType(TypeKind::uintType, coordinates_),
                "a coordinate") &&
           (!arrayed_ || take(tree::TextureItem::layer, uintType(), "an array index"));
}

bool Sema::TextureCall::reading() {
    if (type_.access == TextureAccess::write) {
        sema_.error(range_, "'" + toText(&type_) +
                                "' is only written: its access is "
                                "access::write");
        return false;
    }
    result_->type = type_.depth ? type_.element : four();
    if (cube_ && type_.access != TextureAccess::readWrite) {
        // A cube's texels are only sampled, here at their middles and without a filter.
        items_[tree::TextureItem::sampler] = sema_.plainSampler(range_);
        if (items_[tree::TextureItem::sampler] == nullptr) {
            return false;
        }
    }
    return texel() && (!multisampled_ || take(tree::TextureItem::level, uintType(), "a sample")) &&
           (multisampled_ || next_ >= given_.size() ||
            take(tree::TextureItem::level, uintType(), "a level"));
}

bool Sema::TextureCall::writing() {
    if (type_.access != TextureAccess::write && type_.access != TextureAccess::readWrite) {
        sema_.error(range_, "'" + toText(&type_) +
                                "' cannot be written: its access is not "
                                "access::write or access::read_write");
        return false;
    }
    result_->type = voidType();
    return take(tree::TextureItem::compared, four(), "a colour") && texel() &&
           (next_ >= given_.size() || take(tree::TextureItem::level, uintType(), "a level"));
}

bool Sema::TextureCall::query() {
    using enum TextureShape;
    const bool levels = !multisampled_ && type_.shape != textureBuffer;
    const bool flat =
        type_.shape == texture1d || type_.shape == texture1dArray || type_.shape == textureBuffer;
    bool fits = false;
    switch (member_.special) {
    case Special::width:
        fits = true;
        break;
    case Special::height:
        fits = !flat;
        break;
    case Special::depth:
        fits = type_.shape == texture3d;
        break;
    case Special::arraySize:
        fits = arrayed_;
        break;
    case Special::mipLevels:
        fits = levels;
        break;
    default:
        fits = multisampled_;
        break;
    }
    if (!fits) {
        sema_.error(range_, "'" + toText(&type_) + "' has no '" + std::string(member_.name) + "'");
        return false;
    }
    result_->type = uintType();
    return next_ >= given_.size() || !levels ||
           take(tree::TextureItem::level, uintType(), "a level");
}

} // namespace msl
