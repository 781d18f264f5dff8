#include <spirv/unified1/GLSL.std.450.h>
#include <spirv/unified1/spirv.hpp>

#include "msl/lower/lower.h"

namespace msl {

using ir::Op;
namespace TextureItem = tree::TextureItem;

Lowerer::Value Lowerer::textureResource(const tree::Expr* expr) {
    const Binding* binding = settledTexture_ != nullptr ? settledTexture_ : findBinding(expr);
    if (binding != nullptr && binding->kind == Binding::Kind::texture) {
        return binding->resource;
    }
    error(expr->range, "which texture this is cannot be known when compiling");
    stopped_ = true;
    return ir::kNoValue;
}

// Which of the unit's constexpr samplers an expression names; UINT32_MAX for a bound one.
uint32_t Lowerer::samplerIndex(const tree::Expr* expr) {
    if (expr->kind == tree::ExprKind::variable && expr->variable->samplerIndex != UINT32_MAX) {
        return expr->variable->samplerIndex;
    }
    const Binding* binding = settledSampler_ != nullptr ? settledSampler_ : findBinding(expr);
    return binding != nullptr ? binding->samplerIndex : UINT32_MAX;
}

Lowerer::Value Lowerer::samplerResource(const tree::Expr* expr) {
    if (const uint32_t index = samplerIndex(expr); index != UINT32_MAX) {
        return constantSampler(index);
    }
    const Binding* binding = settledSampler_ != nullptr ? settledSampler_ : findBinding(expr);
    if (binding != nullptr && binding->kind == Binding::Kind::sampler) {
        return binding->resource;
    }
    error(expr->range, "which sampler this is cannot be known when compiling");
    stopped_ = true;
    return ir::kNoValue;
}

// The coordinate with the array's index as its last component.
Lowerer::Value Lowerer::textureCoordinate(const tree::Expr* expr, bool integer) {
    const Value coordinate = value(expr->items[TextureItem::coordinate]);
    const auto* face = expr->items[TextureItem::face];
    if (expr->items[TextureItem::layer] == nullptr && face == nullptr) {
        return coordinate;
    }
    Value layer = ir::kNoValue;
    if (expr->items[TextureItem::layer] != nullptr) {
        layer = value(expr->items[TextureItem::layer]);
    }
    if (face != nullptr) {
        // A cube that is written is a row of faces.
        const Value side = value(face);
        layer = layer == ir::kNoValue ? side
                                      : builder_.binary(Op::iAdd, ir::kInt, side,
                                                        builder_.binary(Op::iMul, ir::kInt, layer,
                                                                        builder_.intConstant(6)));
    }
    const Value last = integer ? layer : builder_.unary(Op::unsignedToFloat, ir::kFloat, layer);
    const uint32_t count = builder_.componentCount(builder_.typeOf(coordinate));
    std::vector<Value> parts;
    for (uint32_t i = 0; i < count; ++i) {
        parts.push_back(count == 1 ? coordinate : builder_.extract(coordinate, i));
    }
    parts.push_back(last);
    return builder_.construct(ir::vectorOf(integer ? ir::kInt : ir::kFloat, count + 1), parts);
}

// A texel as the source's type has it.
Lowerer::Value Lowerer::fromTexel(const Type* texture, Value texel, const Type* result) {
    if (texture->element->isSigned()) {
        texel = builder_.unary(Op::bitcast, ir::vectorOf(ir::kInt, 4), texel);
    }
    return result->isScalar() ? builder_.extract(texel, 0) : texel;
}

Lowerer::Value Lowerer::texture(const tree::Expr* expr) {
    if (const auto* open = openChoice(expr->items[TextureItem::texture], settledTexture_)) {
        return onEachCandidate(expr, *open, settledTexture_);
    }
    if (const auto* open = openChoice(expr->items[TextureItem::sampler], settledSampler_)) {
        return onEachCandidate(expr, *open, settledSampler_);
    }
    const Value variable = textureResource(expr->items[TextureItem::texture]);
    if (variable == ir::kNoValue) {
        return expr->type->isVoid() ? ir::kNoValue : builder_.undefined(irType(expr->type));
    }
    switch (expr->library->special) {
    case Special::read:
        return readTexel(expr, variable);
    case Special::write:
        writeTexel(expr, variable);
        return ir::kNoValue;
    case Special::fence:
        return ir::kNoValue;
    case Special::sample:
    case Special::sampleCompare:
    case Special::gather:
    case Special::gatherCompare:
        return sampleTexture(expr, variable);
    case Special::clampedLod:
    case Special::unclampedLod: {
        const Value lod = queryLod(expr, variable, textureCoordinate(expr, false));
        return builder_.extract(lod, expr->library->special == Special::clampedLod ? 0 : 1);
    }
    default:
        return queryTexture(expr, variable);
    }
}

// The texture's values as the intermediate form types them.
ir::TypeId Lowerer::texelType(const Type& type, ir::TypeId image) {
    return type.element->isSigned() ? builder_.signedInt(4)
                                    : ir::vectorOf(module_.types[image].element, 4);
}

// The direction from a cube's middle to the middle of a texel, by the faces' axes as Vulkan's
// specification tabulates them in "Cube Map Face Selection".
Lowerer::Value Lowerer::cubeDirection(const tree::Expr* expr, Value image, Value level) {
    const bool arrayed = module_.types[builder_.typeOf(image)].arrayed;
    const Value size = builder_.extract(
        builder_.emit(Op::querySize, ir::vectorOf(ir::kInt, arrayed ? 3 : 2), {image, level}), 0);
    const Value coordinate = value(expr->items[TextureItem::coordinate]);
    const Value face = value(expr->items[TextureItem::face]);
    const auto op = [&](Op code, Value a, Value b) {
        return builder_.binary(code, ir::kFloat, a, b);
    };
    const Value one = builder_.floatConstant(1.0F);
    const auto across = [&](uint32_t axis) {
        const Value texel =
            builder_.unary(Op::unsignedToFloat, ir::kFloat, builder_.extract(coordinate, axis));
        const Value middle = op(Op::fAdd, texel, builder_.floatConstant(0.5F));
        const Value part =
            op(Op::fDiv, middle, builder_.unary(Op::unsignedToFloat, ir::kFloat, size));
        return op(Op::fSub, op(Op::fMul, part, builder_.floatConstant(2.0F)), one);
    };
    const auto negative = [&](Value a) { return builder_.unary(Op::fNegate, ir::kFloat, a); };
    const Value s = across(0);
    const Value t = across(1);
    const Value minus = builder_.floatConstant(-1.0F);
    const ir::TypeId direction = ir::vectorOf(ir::kFloat, 3);
    const Value axes[6][3] = {{one, negative(t), negative(s)},
                              {minus, negative(t), s},
                              {s, one, t},
                              {s, minus, negative(t)},
                              {s, negative(t), one},
                              {negative(s), negative(t), minus}};
    Value result = builder_.construct(direction, axes[5]);
    for (uint32_t i = 5; i-- > 0;) {
        result = builder_.select(direction, isWord(face, i), builder_.construct(direction, axes[i]),
                                 result);
    }
    return result;
}

Lowerer::Value Lowerer::readCubeTexel(const tree::Expr* expr, Value variable) {
    const Type& type = *expr->a->type;
    const ir::TypeId imageType = module_.typeOf(variable).element;
    const Value image = builder_.emit(Op::load, imageType, {variable});
    const auto* item = expr->items[TextureItem::level];
    const Value level = item != nullptr ? value(item) : builder_.intConstant(0);
    Value at = cubeDirection(expr, image, level);
    if (const auto* layer = expr->items[TextureItem::layer]) {
        const Value number = builder_.unary(Op::unsignedToFloat, ir::kFloat, value(layer));
        const Value parts[] = {builder_.extract(at, 0), builder_.extract(at, 1),
                               builder_.extract(at, 2), number};
        at = builder_.construct(ir::vectorOf(ir::kFloat, 4), parts);
    }
    const Value combined = sampledImage(expr, variable);
    const Value texel =
        builder_.emit(Op::sampleExplicit, texelType(type, imageType),
                      {combined, at, builder_.unary(Op::unsignedToFloat, ir::kFloat, level)},
                      spv::ImageOperandsLodMask);
    return fromTexel(&type, texel, expr->type);
}

Lowerer::Value Lowerer::readTexel(const tree::Expr* expr, Value variable) {
    const Type& type = *expr->a->type;
    const ir::TypeId image = module_.typeOf(variable).element;
    const ir::TypeInfo shape = module_.types[image];
    if (shape.dim == ir::ImageDim::cube && !shape.storageImage) {
        return readCubeTexel(expr, variable);
    }
    const Value coordinate = textureCoordinate(expr, true);
    std::vector<uint32_t> operands{builder_.emit(Op::load, image, {variable}), coordinate};
    uint32_t mask = 0;
    if (shape.multisampled) {
        operands.push_back(value(expr->items[TextureItem::level]));
        mask = spv::ImageOperandsSampleMask;
    } else if (!shape.storageImage && shape.dim != ir::ImageDim::buffer) {
        const auto* level = expr->items[TextureItem::level];
        operands.push_back(level != nullptr ? value(level) : builder_.intConstant(0));
        mask = spv::ImageOperandsLodMask;
    }
    const Value texel = builder_.emit(shape.storageImage ? Op::imageRead : Op::fetch,
                                      texelType(type, image), operands, mask);
    return fromTexel(&type, texel, expr->type);
}

void Lowerer::writeTexel(const tree::Expr* expr, Value variable) {
    const ir::TypeId image = module_.typeOf(variable).element;
    const Value color = value(expr->items[TextureItem::compared]);
    const Value coordinate = textureCoordinate(expr, true);
    const Value texel = builder_.unary(Op::bitcast, texelType(*expr->a->type, image), color);
    builder_.emit(Op::imageWrite, ir::kVoid,
                  {builder_.emit(Op::load, image, {variable}), coordinate, texel});
}

Lowerer::Value Lowerer::queryTexture(const tree::Expr* expr, Value variable) {
    const Special what = expr->library->special;
    const ir::TypeId imageType = module_.typeOf(variable).element;
    const ir::TypeInfo shape = module_.types[imageType];
    const Value image = builder_.emit(Op::load, imageType, {variable});
    if (what == Special::mipLevels) {
        return shape.storageImage ? builder_.intConstant(1)
                                  : builder_.emit(Op::queryLevels, ir::kInt, {image});
    }
    if (what == Special::samples) {
        return builder_.emit(Op::querySamples, ir::kInt, {image});
    }
    const bool line = shape.dim == ir::ImageDim::dim1d || shape.dim == ir::ImageDim::buffer;
    const uint32_t sides = line ? 1 : shape.dim == ir::ImageDim::dim3d ? 3 : 2;
    const uint32_t count = sides + (shape.arrayed ? 1 : 0);
    const ir::TypeId sizes = ir::vectorOf(ir::kInt, count);
    Value size = ir::kNoValue;
    if (shape.storageImage || shape.multisampled || shape.dim == ir::ImageDim::buffer) {
        size = builder_.emit(Op::querySizeOnly, sizes, {image});
    } else {
        const auto* level = expr->items[TextureItem::level];
        size = builder_.emit(Op::querySize, sizes,
                             {image, level != nullptr ? value(level) : builder_.intConstant(0)});
    }
    const uint32_t part = what == Special::width    ? 0
                          : what == Special::height ? 1
                          : what == Special::depth  ? 2
                                                    : sides;
    return count == 1 ? size : builder_.extract(size, part);
}

// The texture with its sampler.
Lowerer::Value Lowerer::sampledImage(const tree::Expr* expr, Value variable) {
    const ir::TypeId imageType = module_.typeOf(variable).element;
    const Value sampler = samplerResource(expr->items[TextureItem::sampler]);
    if (sampler == ir::kNoValue) {
        return ir::kNoValue;
    }
    const Value image = builder_.emit(Op::load, imageType, {variable});
    const Value loaded = builder_.emit(Op::load, module_.typeOf(sampler).element, {sampler});
    const ir::TypeId combined =
        builder_.type({.kind = ir::TypeKind::sampledImage, .element = imageType});
    return builder_.emit(Op::sampledImage, combined, {image, loaded});
}

// The level that a sampling chooses, clamped and not; zero where there are no derivatives.
Lowerer::Value Lowerer::queryLod(const tree::Expr* expr, Value variable, Value coordinate) {
    const ir::TypeId pair = ir::vectorOf(ir::kFloat, 2);
    const Value combined = stage_ == Stage::fragment ? sampledImage(expr, variable) : ir::kNoValue;
    return combined == ir::kNoValue ? builder_.zero(pair)
                                    : builder_.emit(Op::queryLod, pair, {combined, coordinate});
}

Lowerer::Value Lowerer::sampleTexture(const tree::Expr* expr, Value variable) {
    const Type& type = *expr->a->type;
    const Special what = expr->library->special;
    const ir::TypeId texel = texelType(type, module_.typeOf(variable).element);
    const uint32_t options = samplerIndex(expr->items[TextureItem::sampler]);
    const bool pixels = options != UINT32_MAX && !unit_->samplers[options].normalizedCoordinates;
    const Value coordinate = textureCoordinate(expr, false);
    const bool compares = what == Special::sampleCompare || what == Special::gatherCompare;
    const bool gathers = what == Special::gather || what == Special::gatherCompare;
    std::vector<uint32_t> operands{ir::kNoValue, coordinate};
    if (compares) {
        operands.push_back(value(expr->items[TextureItem::compared]));
    } else if (gathers) {
        operands.push_back(builder_.intConstant(expr->componentCount));
    }
    uint32_t mask = 0;
    const auto level = [&](Value at) {
        mask = spv::ImageOperandsLodMask;
        operands.push_back(at);
    };
    const auto* clamp = expr->items[TextureItem::lodClamp];
    const auto* lod = expr->items[TextureItem::level];
    if (!gathers) {
        if (expr->index == 3) {
            mask = spv::ImageOperandsGradMask;
            operands.push_back(value(expr->items[TextureItem::gradientX]));
            operands.push_back(value(expr->items[TextureItem::gradientY]));
        } else if (expr->index == 2) {
            level(value(lod));
        } else if (pixels || stage_ == Stage::vertex) {
            // Only fragments have the derivatives that choose a level.
            level(builder_.floatConstant(0.0F));
        } else if (gradients_ && clamp == nullptr) {
            const auto scaled = [&](Value gradient) {
                if (lod == nullptr) {
                    return gradient;
                }
                const ir::TypeId shape = builder_.typeOf(gradient);
                const Value factor = builder_.extended(GLSLstd450Exp2, ir::kFloat, {value(lod)});
                return builder_.binary(Op::fMul, shape, gradient, builder_.splat(shape, factor));
            };
            mask = spv::ImageOperandsGradMask;
            operands.push_back(scaled(gradients_->first));
            operands.push_back(scaled(gradients_->second));
        } else if (clamp != nullptr) {
            // The level that would be chosen, and no finer one than the clamp allows.
            Value chosen = builder_.extract(
                queryLod(expr, variable, value(expr->items[TextureItem::coordinate])), 0);
            if (lod != nullptr) {
                chosen = builder_.binary(Op::fAdd, ir::kFloat, chosen, value(lod));
            }
            level(minMax(floatType(), true, chosen, value(clamp)));
        } else if (expr->index == 1) {
            mask = spv::ImageOperandsBiasMask;
            operands.push_back(value(lod));
        }
    }
    const bool explicitLod = (mask & (spv::ImageOperandsLodMask | spv::ImageOperandsGradMask)) != 0;
    if (const auto* given = expr->items[TextureItem::offset]) {
        const Value offset = value(given);
        if (!builder_.isConstant(offset)) {
            error(given->range, "an offset must be known when compiling");
        }
        mask |= spv::ImageOperandsConstOffsetMask;
        operands.push_back(offset);
    }
    operands[0] = sampledImage(expr, variable);
    if (operands[0] == ir::kNoValue) {
        return builder_.undefined(irType(expr->type));
    }
    switch (what) {
    case Special::gather:
        return fromTexel(&type, builder_.emit(Op::gather, texel, operands, mask), expr->type);
    case Special::gatherCompare:
        return builder_.emit(Op::drefGather, texel, operands, mask);
    case Special::sampleCompare:
        return builder_.emit(explicitLod ? Op::sampleDrefExplicit : Op::sampleDrefImplicit,
                             ir::kFloat, operands, mask);
    default:
        return fromTexel(&type,
                         builder_.emit(explicitLod ? Op::sampleExplicit : Op::sampleImplicit, texel,
                                       operands, mask),
                         expr->type);
    }
}

} // namespace msl
