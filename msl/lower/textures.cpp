#include <spirv/unified1/spirv.hpp>

#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

Lowerer::Value Lowerer::textureResource(const tree::Expr* expr) {
    if (expr->kind == tree::ExprKind::variable) {
        const auto& binding = frame_->slots[expr->variable->slot];
        if (binding.kind == Binding::Kind::texture) {
            return binding.resource;
        }
    }
    error(expr->range, "this texture is not known when compiling");
    stopped_ = true;
    return ir::kNoValue;
}

Lowerer::Value Lowerer::samplerResource(const tree::Expr* expr) {
    if (expr->kind == tree::ExprKind::variable) {
        if (expr->variable->samplerIndex != UINT32_MAX) {
            return constantSampler(expr->variable->samplerIndex);
        }
        const auto& binding = frame_->slots[expr->variable->slot];
        if (binding.kind == Binding::Kind::sampler) {
            return binding.resource;
        }
    }
    error(expr->range, "this sampler is not known when compiling");
    stopped_ = true;
    return ir::kNoValue;
}

// The coordinate with the array's index as its last component.
Lowerer::Value Lowerer::textureCoordinate(const tree::Expr* expr, bool integer) {
    const Value coordinate = value(expr->items[2]);
    if (expr->items[3] == nullptr) {
        return coordinate;
    }
    const Value layer = value(expr->items[3]);
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
    const Type& type = *expr->a->type;
    const Special what = expr->library->special;
    const Value variable = textureResource(expr->items[0]);
    if (variable == ir::kNoValue) {
        return builder_.undefined(irType(expr->type));
    }
    const ir::TypeId imageType = module_.typeOf(variable).element;
    const ir::TypeInfo imageInfo = module_.types[imageType];
    const bool isSigned = type.element->isSigned();
    const ir::TypeId component = imageInfo.element;
    const ir::TypeId texel = isSigned ? builder_.signedInt(4) : ir::vectorOf(component, 4);
    const auto image = [&] { return builder_.emit(Op::load, imageType, {variable}); };
    if (what == Special::read) {
        const Value coordinate = textureCoordinate(expr, true);
        const Value level =
            expr->items[5] != nullptr ? value(expr->items[5]) : builder_.intConstant(0);
        const Value fetched = builder_.emit(Op::fetch, texel, {image(), coordinate, level},
                                            spv::ImageOperandsLodMask);
        return fromTexel(&type, fetched, expr->type);
    }
    if (what == Special::mipLevels) {
        return builder_.emit(Op::queryLevels, ir::kInt, {image()});
    }
    if (what == Special::width || what == Special::height || what == Special::depth ||
        what == Special::arraySize) {
        const Value level =
            expr->items[5] != nullptr ? value(expr->items[5]) : builder_.intConstant(0);
        const uint32_t sides = imageInfo.dim == ir::ImageDim::dim1d   ? 1
                               : imageInfo.dim == ir::ImageDim::dim3d ? 3
                                                                      : 2;
        const uint32_t count = sides + (imageInfo.arrayed ? 1 : 0);
        const Value size =
            builder_.emit(Op::querySize, ir::vectorOf(ir::kInt, count), {image(), level});
        const uint32_t part = what == Special::width    ? 0
                              : what == Special::height ? 1
                              : what == Special::depth  ? 2
                                                        : sides;
        return count == 1 ? size : builder_.extract(size, part);
    }
    const Value sampler = samplerResource(expr->items[1]);
    if (sampler == ir::kNoValue) {
        return builder_.undefined(irType(expr->type));
    }
    const auto* samplerVariable = expr->items[1]->variable;
    const bool pixels = samplerVariable->samplerIndex != UINT32_MAX &&
                        !unit_->samplers[samplerVariable->samplerIndex].normalizedCoordinates;
    const Value coordinate = textureCoordinate(expr, false);
    const bool compares = what == Special::sampleCompare || what == Special::gatherCompare;
    std::vector<uint32_t> operands{ir::kNoValue, coordinate};
    if (compares) {
        operands.push_back(value(expr->items[4]));
    } else if (what == Special::gather) {
        operands.push_back(builder_.intConstant(expr->componentCount));
    }
    const bool gathers = what == Special::gather || what == Special::gatherCompare;
    uint32_t mask = 0;
    bool explicitLod = false;
    if (!gathers) {
        if (expr->index == 1) {
            if (stage_ == Stage::fragment) {
                mask |= spv::ImageOperandsBiasMask;
                operands.push_back(value(expr->items[5]));
            }
        } else if (expr->index == 2) {
            mask |= spv::ImageOperandsLodMask;
            operands.push_back(value(expr->items[5]));
            explicitLod = true;
        } else if (expr->index == 3) {
            mask |= spv::ImageOperandsGradMask;
            operands.push_back(value(expr->items[6]));
            operands.push_back(value(expr->items[7]));
            explicitLod = true;
        }
        if (!explicitLod && (pixels || stage_ == Stage::vertex)) {
            // Only fragments have the derivatives that choose a level.
            mask = spv::ImageOperandsLodMask;
            operands.resize(compares ? 3 : 2);
            operands.push_back(builder_.floatConstant(0.0F));
            explicitLod = true;
        }
    }
    if (expr->items[8] != nullptr) {
        const Value offset = value(expr->items[8]);
        if (!builder_.isConstant(offset)) {
            error(expr->items[8]->range, "an offset must be known when compiling");
        }
        mask |= spv::ImageOperandsConstOffsetMask;
        operands.push_back(offset);
    }
    const Value loadedImage = image();
    const Value loadedSampler = builder_.emit(Op::load, module_.typeOf(sampler).element, {sampler});
    const ir::TypeId combined =
        builder_.type({.kind = ir::TypeKind::sampledImage, .element = imageType});
    operands[0] = builder_.emit(Op::sampledImage, combined, {loadedImage, loadedSampler});
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
