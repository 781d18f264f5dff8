// Buffers, textures and samplers as entry points name them, and argument buffers, whose resources
// are bound one by one.
#include <algorithm>

#include "msl/library/unsupported.h"
#include "msl/lower/attributes.h"
#include "msl/lower/lower.h"

namespace msl {

using ir::Storage;

ir::TypeId Lowerer::imageType(const Type* type) {
    ir::TypeInfo image{.kind = ir::TypeKind::image};
    image.depth = type->depth;
    image.arrayed = type->shape == TextureShape::texture2dArray ||
                    type->shape == TextureShape::textureCubeArray ||
                    type->shape == TextureShape::texture1dArray ||
                    type->shape == TextureShape::texture2dMultisampleArray;
    image.multisampled = type->shape == TextureShape::texture2dMultisample ||
                         type->shape == TextureShape::texture2dMultisampleArray;
    image.storageImage =
        type->access == TextureAccess::write || type->access == TextureAccess::readWrite;
    switch (type->shape) {
    case TextureShape::texture1d:
    case TextureShape::texture1dArray:
        image.dim = ir::ImageDim::dim1d;
        break;
    case TextureShape::texture3d:
        image.dim = ir::ImageDim::dim3d;
        break;
    case TextureShape::textureCube:
    case TextureShape::textureCubeArray:
        image.dim = ir::ImageDim::cube;
        break;
    case TextureShape::textureBuffer:
        image.dim = ir::ImageDim::buffer;
        break;
    default:
        image.dim = ir::ImageDim::dim2d;
        break;
    }
    image.element = ir::kFloat;
    if (type->element->isInteger()) {
        image.element = type->element->isSigned() ? builder_.signedInt(1) : ir::kInt;
    }
    return builder_.type(image);
}

TextureBinding Lowerer::describe(const Type* type, uint32_t index) {
    auto component = TextureComponent::floatComponent;
    if (type->element->isInteger()) {
        component = type->element->isSigned() ? TextureComponent::intComponent
                                              : TextureComponent::uintComponent;
    }
    const bool writable =
        type->access == TextureAccess::write || type->access == TextureAccess::readWrite;
    return {index, type->shape, component, type->depth, writable};
}

// A texture or sampler of its own in the descriptor set.
Lowerer::Binding Lowerer::opaqueResource(const Type* type, uint32_t number) {
    const ir::Global global{
        .storage = Storage::resource, .readOnly = true, .set = descriptorSet(), .binding = number};
    Binding binding;
    binding.kind = type->isTexture() ? Binding::Kind::texture : Binding::Kind::sampler;
    binding.resource = interfaceVariable(
        type->isTexture() ? imageType(type) : builder_.type({.kind = ir::TypeKind::sampler}),
        global);
    return binding;
}

// A buffer that holds one `held`, or any number of them.
std::optional<Lowerer::Binding> Lowerer::bufferResource(const Type* held, bool many,
                                                        AddressSpace space, bool readOnly,
                                                        uint32_t number, Range range) {
    if (space != AddressSpace::constant && space != AddressSpace::device) {
        error(range, "a buffer lies in the 'constant' or 'device' address space");
        return std::nullopt;
    }
    const bool words = unit_->castsPointers || needsWords(held);
    const ir::TypeId layout = words ? builder_.array(ir::kInt, 0, 4) : layoutType(held, range);
    if (layout == ir::kVoid) {
        return std::nullopt;
    }
    const Type* inner = held;
    while (inner->isArray()) {
        inner = inner->element;
    }
    const ir::Member member{many && !words ? builder_.array(layout, 0, held->size) : layout, 0,
                            inner->isMatrix() ? inner->element->size : 0};
    const ir::TypeId block = builder_.structure(std::span(&member, 1), true, true);
    const ir::Global global{.storage = Storage::buffer,
                            .readOnly = readOnly,
                            .set = descriptorSet(),
                            .binding = number};
    Binding binding;
    binding.kind = Binding::Kind::place;
    binding.place.root = words ? Place::Root::words : Place::Root::buffer;
    binding.place.base = interfaceVariable(block, global);
    binding.place.rootType = binding.place.type = held;
    binding.place.constantSpace = space == AddressSpace::constant;
    if (!words) {
        binding.place.steps.push_back({false, 0});
        if (many) {
            binding.place.steps.push_back({false, 0});
        }
    }
    return binding;
}

uint32_t Lowerer::descriptorSet() const {
    return stage_ == Stage::vertex ? kVertexDescriptorSet : kFragmentDescriptorSet;
}

// A struct that holds resources, in a buffer: each resource has a descriptor of its own, and what
// is plain is read from the buffer. `next` is the id that follows when none is written.
std::optional<Lowerer::Binding> Lowerer::argumentBuffer(const Type* type, const Place& data,
                                                        uint32_t buffer, uint32_t& next,
                                                        Range range, EntryPoint& entry) {
    Binding binding;
    if (!type->holdsResources()) {
        binding.kind = Binding::Kind::place;
        binding.place = data;
        ++next;
        return binding;
    }
    if (type->isArray() || type->isStruct()) {
        binding.kind = Binding::Kind::parts;
        const size_t count = type->isArray() ? type->length : type->structure->fields.size();
        for (uint32_t i = 0; i < count; ++i) {
            const Type* part = type->element;
            if (type->isStruct()) {
                part = type->structure->fields[i].type;
                const auto* id =
                    findAttribute(attributesOfField(type, type->structure->fields[i].name), "id");
                next = id != nullptr && id->hasNumber ? id->number : next;
            }
            Place at = data;
            addStep(at, {false, i}, part);
            auto made = argumentBuffer(part, at, buffer, next, range, entry);
            if (!made) {
                return std::nullopt;
            }
            binding.parts.push_back(std::move(*made));
        }
        return binding;
    }
    const auto index = static_cast<uint32_t>(entry.arguments.size());
    if (index >= kMaxArguments) {
        error(range,
              "argument buffers hold more than " + std::to_string(kMaxArguments) + " resources");
        return std::nullopt;
    }
    ArgumentBinding argument;
    argument.buffer = buffer;
    argument.id = next++;
    argument.binding = kArgumentBinding + index;
    if (type->isPointer()) {
        argument.kind = ArgumentKind::buffer;
        argument.size = type->element->size;
        argument.writable = !type->constPointee;
        entry.arguments.push_back(argument);
        if (type->element->holdsResources()) {
            error(range, "an argument buffer inside another one is not supported");
            return std::nullopt;
        }
        return bufferResource(type->element, true, type->space, type->constPointee,
                              argument.binding, range);
    }
    argument.kind = type->isTexture() ? ArgumentKind::texture : ArgumentKind::sampler;
    if (type->isTexture()) {
        argument.texture = describe(type, 0);
    }
    entry.arguments.push_back(argument);
    return opaqueResource(type, argument.binding);
}

bool Lowerer::resourceParameter(const tree::Variable& parameter, uint32_t index, Binding& binding,
                                EntryPoint& entry) {
    const Type* type = parameter.type;
    if (type->isSampler()) {
        entry.samplers.push_back({index});
        binding = opaqueResource(type, kSamplerBinding + index);
        return true;
    }
    if (type->isTexture()) {
        entry.textures.push_back(describe(type, index));
        binding = opaqueResource(type, kTextureBinding + index);
        return true;
    }
    if (type->isArray() && type->element->isResource() && !parameter.isReference) {
        binding.kind = Binding::Kind::parts;
        for (uint32_t i = 0; i < type->length; ++i) {
            tree::Variable element = parameter;
            element.type = type->element;
            binding.parts.emplace_back();
            if (!resourceParameter(element, index + i, binding.parts.back(), entry)) {
                return false;
            }
        }
        return true;
    }
    const bool pointer = type->isPointer();
    const Type* held = pointer ? type->element : type;
    const bool readOnly = pointer ? type->constPointee : parameter.isConst;
    const auto space = pointer ? type->space : parameter.space;
    auto made =
        bufferResource(held, pointer, space, readOnly, kBufferBinding + index, parameter.range);
    if (!made) {
        return false;
    }
    entry.buffers.push_back({index, held->size, pointer, !readOnly});
    if (held->holdsResources()) {
        uint32_t next = 0;
        made = argumentBuffer(held, made->place, index, next, parameter.range, entry);
        if (!made) {
            return false;
        }
    }
    binding = std::move(*made);
    return true;
}

bool Lowerer::isTaken(std::string_view kind, uint32_t index, const EntryPoint& entry) const {
    const auto taken = [&](const auto& list) {
        return std::any_of(list.begin(), list.end(),
                           [&](const auto& item) { return item.index == index; });
    };
    return kind == "texture"   ? taken(entry.textures)
           : kind == "sampler" ? taken(entry.samplers)
                               : taken(entry.buffers);
}

uint32_t Lowerer::freeIndex(std::string_view kind, const EntryPoint& entry) const {
    uint32_t index = 0;
    while (isTaken(kind, index, entry)) {
        ++index;
    }
    return index;
}

// A struct whose members are parameters of their own.
bool Lowerer::gatheredParameter(const tree::Variable& parameter, Binding& binding,
                                EntryPoint& entry) {
    binding.kind = Binding::Kind::parts;
    for (const auto& field : parameter.type->structure->fields) {
        if (field.isBase) {
            tree::Variable base = parameter;
            base.type = field.type;
            binding.parts.emplace_back();
            if (!gatheredParameter(base, binding.parts.back(), entry)) {
                return false;
            }
            continue;
        }
        tree::Variable member = parameter;
        member.name = field.name;
        member.type = field.type;
        member.attributes = attributesOfField(parameter.type, field.name);
        if (field.isReference) {
            member.type = field.type->element;
            member.isReference = true;
            member.space = field.type->space;
            member.isConst = field.type->constPointee;
        }
        binding.parts.emplace_back();
        if (!entryParameter(member, binding.parts.back(), entry)) {
            return false;
        }
    }
    return true;
}

bool Lowerer::entryParameter(const tree::Variable& parameter, Binding& binding, EntryPoint& entry) {
    const Type* type = parameter.type;
    const Type* single = type->isArray() && !parameter.isReference ? type->element : type;
    if (type->isStruct() && type->holdsResources() && !parameter.isReference &&
        parameter.attributes.empty()) {
        return gatheredParameter(parameter, binding, entry);
    }
    if (single->isResource() || type->isPointer() || parameter.isReference) {
        struct Kind {
            std::string_view attribute;
            uint32_t limit;
        };
        const Kind kind = single->isTexture()   ? Kind{"texture", kMaxTextures}
                          : single->isSampler() ? Kind{"sampler", kMaxSamplers}
                                                : Kind{"buffer", kMaxBuffers};
        const uint32_t count = single != type ? type->length : 1;
        std::optional<uint32_t> index;
        if (const auto* attribute = findAttribute(parameter.attributes, kind.attribute)) {
            index = attributeNumber(*attribute);
            if (!index) {
                return false;
            }
        } else {
            index = freeIndex(kind.attribute, entry);
        }
        if (*index + count > kind.limit) {
            error(parameter.range, "the " + std::string(kind.attribute) + " index " +
                                       std::to_string(*index + count - 1) +
                                       " is beyond the last, " + std::to_string(kind.limit - 1));
            return false;
        }
        for (uint32_t i = 0; i < count; ++i) {
            if (isTaken(kind.attribute, *index + i, entry)) {
                error(parameter.range, "the " + std::string(kind.attribute) + " index " +
                                           std::to_string(*index + i) + " is taken already");
                return false;
            }
        }
        return resourceParameter(parameter, *index, binding, entry);
    }
    for (const auto& attribute : parameter.attributes) {
        const auto name = attribute.name->text;
        if (name == "color") {
            error(attribute.range, "reading the framebuffer through '[[color(n)]]' is not "
                                   "supported; bind the picture as a texture");
            return false;
        }
        if (const auto reason = unsupportedReason(name); !reason.empty()) {
            error(attribute.range, std::string(reason));
            return false;
        }
        const bool known = isStageInput(name);
        if (!known) {
            error(attribute.range,
                  "'[[" + std::string(name) + "]]' is not supported on a parameter here");
            return false;
        }
    }
    if (parameter.attributes.empty()) {
        error(parameter.range, "this parameter of an entry point has no attribute that says where "
                               "its value comes from");
        return false;
    }
    const auto input = stageIn(parameter);
    if (!input) {
        return false;
    }
    if (isMemoryType(type)) {
        binding.kind = Binding::Kind::place;
        binding.place = newMemory(type);
        store(binding.place, *input);
        return true;
    }
    binding.kind = Binding::Kind::ssa;
    binding.ssa = newVariable(ir::kNoValue);
    setVariable(binding.ssa, *input);
    return true;
}

Lowerer::Value Lowerer::constantSampler(uint32_t index) {
    constantSamplers_.resize(unit_->samplers.size(), ir::kNoValue);
    if (constantSamplers_[index] == ir::kNoValue) {
        const ir::Global global{.storage = Storage::resource,
                                .readOnly = true,
                                .set = descriptorSet(),
                                .binding = kConstantSamplerBinding + index};
        constantSamplers_[index] =
            interfaceVariable(builder_.type({.kind = ir::TypeKind::sampler}), global);
        usedSamplers_.push_back(index);
    }
    return constantSamplers_[index];
}

} // namespace msl
