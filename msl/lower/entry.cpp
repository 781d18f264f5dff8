#include <algorithm>

#include "msl/lower/lower.h"

namespace msl {

using ir::BuiltIn;
using ir::Op;
using ir::Storage;

namespace {

const ast::Attribute* find(std::span<const ast::Attribute> attributes, std::string_view name) {
    for (const auto& attribute : attributes) {
        if (attribute.name->text == name) {
            return &attribute;
        }
    }
    return nullptr;
}

std::span<const ast::Attribute> attributesOfField(const Type* type, Name name) {
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

struct BuiltInName {
    std::string_view name;
    BuiltIn builtIn;
    Stage stage;
    uint32_t components;
    TypeKind scalar;
};

constexpr BuiltInName kInputs[] = {
    {"position", BuiltIn::fragCoord, Stage::fragment, 4, TypeKind::floatType},
    {"front_facing", BuiltIn::frontFacing, Stage::fragment, 1, TypeKind::boolType},
    {"point_coord", BuiltIn::pointCoord, Stage::fragment, 2, TypeKind::floatType},
    {"sample_id", BuiltIn::sampleId, Stage::fragment, 1, TypeKind::uintType},
    {"vertex_id", BuiltIn::vertexIndex, Stage::vertex, 1, TypeKind::uintType},
    {"instance_id", BuiltIn::instanceIndex, Stage::vertex, 1, TypeKind::uintType},
    {"base_vertex", BuiltIn::baseVertex, Stage::vertex, 1, TypeKind::uintType},
    {"base_instance", BuiltIn::baseInstance, Stage::vertex, 1, TypeKind::uintType},
};

} // namespace

void Lowerer::run(const tree::Unit& unit, Module& result) {
    unit_ = &unit;
    globals_.resize(unit.globalCount);
    for (const auto* function : unit.entryPoints) {
        if (stopped_ || diagnostics_.exhausted()) {
            break;
        }
        entryPoint(*function, result);
    }
    result.usesInt64 = usesInt64_;
}

void Lowerer::useGlobal(Value variable) {
    auto& used = function_->interface;
    if (std::find(used.begin(), used.end(), variable) == used.end()) {
        used.push_back(variable);
    }
}

uint32_t Lowerer::varyingLocation(Name name) {
    const auto found = std::find(varyings_.begin(), varyings_.end(), name);
    const auto index = static_cast<uint32_t>(found - varyings_.begin());
    if (found == varyings_.end()) {
        varyings_.push_back(name);
    }
    return index;
}

Lowerer::Value Lowerer::interfaceVariable(ir::TypeId type, ir::Global global) {
    global.variable = builder_.variable(type, global.storage, nullptr);
    module_.globals.push_back(global);
    useGlobal(global.variable);
    return global.variable;
}

// Void where a value of the type cannot cross between stages.
ir::TypeId Lowerer::interfaceType(const Type* type) {
    const Type* scalar = type->scalar();
    if (!type->isArithmetic() || scalar->isBool() || scalar->size == 8) {
        return ir::kVoid;
    }
    return scalar->isSigned() ? builder_.signedInt(type->components()) : irType(type);
}

std::optional<uint32_t> Lowerer::attributeNumber(const ast::Attribute& attribute) {
    if (attribute.argument != nullptr && attribute.argument->kind == ast::ExprKind::intLiteral) {
        return static_cast<uint32_t>(std::min<uint64_t>(attribute.argument->intValue, UINT32_MAX));
    }
    error(attribute.range, "'[[" + std::string(attribute.name->text) + "]]' needs a number");
    return std::nullopt;
}

// An input that stands for itself: a built-in value, a vertex attribute, or what the vertex stage
// has passed on.
std::optional<Lowerer::Value> Lowerer::inputValue(const Type* type,
                                                  std::span<const ast::Attribute> attributes,
                                                  Name name, Range range) {
    ir::Global global{.storage = Storage::input};
    for (const auto& input : kInputs) {
        if (input.stage != stage_ || find(attributes, input.name) == nullptr) {
            continue;
        }
        const Type* natural = vectorType(input.scalar, input.components);
        if (!type->isArithmetic() || type->components() != input.components) {
            error(range, "'[[" + std::string(input.name) + "]]' has the type '" + toText(natural) +
                             "', not '" + toText(type) + "'");
            return std::nullopt;
        }
        global.builtIn = input.builtIn;
        global.flat = stage_ == Stage::fragment && input.scalar == TypeKind::uintType;
        const ir::TypeId irTypeId = irType(natural);
        const Value loaded =
            builder_.emit(Op::load, irTypeId, {interfaceVariable(irTypeId, global)});
        return convert(loaded, natural, type);
    }
    const ir::TypeId crossing = interfaceType(type);
    if (crossing == ir::kVoid) {
        error(range, "an input of the type '" + toText(type) + "' is not supported");
        return std::nullopt;
    }
    global.hasLocation = true;
    if (stage_ == Stage::vertex) {
        const auto* attribute = find(attributes, "attribute");
        if (attribute == nullptr) {
            error(range, "a vertex input needs '[[attribute(n)]]'");
            return std::nullopt;
        }
        const auto number = attributeNumber(*attribute);
        if (!number) {
            return std::nullopt;
        }
        global.location = *number;
    } else {
        const auto* user = find(attributes, "user");
        global.location =
            varyingLocation(user != nullptr && user->word != nullptr ? user->word : name);
        global.flat = find(attributes, "flat") != nullptr || !type->scalar()->isFloating();
        global.noPerspective = find(attributes, "center_no_perspective") != nullptr ||
                               find(attributes, "centroid_no_perspective") != nullptr ||
                               find(attributes, "sample_no_perspective") != nullptr;
        global.centroid = find(attributes, "centroid_perspective") != nullptr ||
                          find(attributes, "centroid_no_perspective") != nullptr;
        global.sample = find(attributes, "sample_perspective") != nullptr ||
                        find(attributes, "sample_no_perspective") != nullptr;
    }
    const Value loaded = builder_.emit(Op::load, crossing, {interfaceVariable(crossing, global)});
    return builder_.unary(Op::bitcast, irType(type), loaded);
}

std::optional<Lowerer::Value> Lowerer::stageIn(const tree::Variable& parameter) {
    if (!parameter.type->isStruct()) {
        return inputValue(parameter.type, parameter.attributes, parameter.name, parameter.range);
    }
    std::vector<Value> parts;
    for (const auto& field : parameter.type->structure->fields) {
        const auto part = inputValue(field.type, attributesOfField(parameter.type, field.name),
                                     field.name, parameter.range);
        if (!part) {
            return std::nullopt;
        }
        parts.push_back(*part);
    }
    return parts.empty() ? zeroOf(parameter.type)
                         : builder_.construct(irType(parameter.type), parts);
}

bool Lowerer::resourceParameter(const tree::Variable& parameter, uint32_t index, Binding& binding,
                                EntryPoint& entry) {
    const Type* type = parameter.type;
    const uint32_t set = stage_ == Stage::vertex ? kVertexDescriptorSet : kFragmentDescriptorSet;
    ir::Global global{.storage = Storage::resource, .readOnly = true, .set = set};
    if (type->isSampler()) {
        entry.samplers.push_back({index});
        global.binding = kSamplerBinding + index;
        const ir::TypeId sampler = builder_.type({.kind = ir::TypeKind::sampler});
        binding.kind = Binding::Kind::sampler;
        binding.resource = interfaceVariable(sampler, global);
        return true;
    }
    if (type->isTexture()) {
        ir::TypeInfo image{.kind = ir::TypeKind::image};
        image.depth = type->depth;
        image.arrayed = type->shape == TextureShape::texture2dArray ||
                        type->shape == TextureShape::textureCubeArray;
        switch (type->shape) {
        case TextureShape::texture1d:
            image.dim = ir::ImageDim::dim1d;
            break;
        case TextureShape::texture3d:
            image.dim = ir::ImageDim::dim3d;
            break;
        case TextureShape::textureCube:
        case TextureShape::textureCubeArray:
            image.dim = ir::ImageDim::cube;
            break;
        default:
            image.dim = ir::ImageDim::dim2d;
            break;
        }
        auto component = TextureComponent::floatComponent;
        image.element = ir::kFloat;
        if (type->element->isInteger()) {
            const bool isSigned = type->element->isSigned();
            component = isSigned ? TextureComponent::intComponent : TextureComponent::uintComponent;
            image.element = isSigned ? builder_.signedInt(1) : ir::kInt;
        }
        entry.textures.push_back({index, type->shape, component, type->depth});
        global.binding = kTextureBinding + index;
        binding.kind = Binding::Kind::texture;
        binding.resource = interfaceVariable(builder_.type(image), global);
        return true;
    }
    const bool pointer = type->isPointer();
    const Type* held = pointer ? type->element : type;
    const auto space = pointer ? type->space : parameter.space;
    if (space != AddressSpace::constant && space != AddressSpace::device) {
        error(parameter.range, "a buffer lies in the 'constant' or 'device' address space");
        return false;
    }
    const ir::TypeId layout = layoutType(held, parameter.range);
    if (layout == ir::kVoid) {
        return false;
    }
    const bool readOnly = pointer ? type->constPointee : parameter.isConst;
    entry.buffers.push_back({index, held->size, pointer, !readOnly});
    const Type* inner = held;
    while (inner->isArray()) {
        inner = inner->element;
    }
    const ir::Member member{pointer ? builder_.array(layout, 0, held->size) : layout, 0,
                            inner->isMatrix() ? inner->element->size : 0};
    const ir::TypeId block = builder_.structure(std::span(&member, 1), true, true);
    global.storage = Storage::buffer;
    global.readOnly = readOnly;
    global.binding = kBufferBinding + index;
    binding.kind = Binding::Kind::place;
    binding.place.root = Place::Root::buffer;
    binding.place.base = interfaceVariable(block, global);
    binding.place.rootType = binding.place.type = held;
    binding.place.constantSpace = space == AddressSpace::constant;
    binding.place.steps.push_back({false, 0});
    if (pointer) {
        binding.place.steps.push_back({false, 0});
    }
    return true;
}

bool Lowerer::entryParameter(const tree::Variable& parameter, Binding& binding, EntryPoint& entry) {
    const Type* type = parameter.type;
    if (type->isResource() || type->isPointer() || parameter.isReference) {
        struct Kind {
            std::string_view attribute;
            uint32_t limit;
            size_t used;
        };
        const Kind kind = type->isTexture()   ? Kind{"texture", kMaxTextures, entry.textures.size()}
                          : type->isSampler() ? Kind{"sampler", kMaxSamplers, entry.samplers.size()}
                                              : Kind{"buffer", kMaxBuffers, entry.buffers.size()};
        std::optional<uint32_t> index;
        if (const auto* attribute = find(parameter.attributes, kind.attribute)) {
            index = attributeNumber(*attribute);
            if (!index) {
                return false;
            }
        } else {
            index = static_cast<uint32_t>(kind.used);
        }
        if (*index >= kind.limit) {
            error(parameter.range, "the " + std::string(kind.attribute) + " index " +
                                       std::to_string(*index) + " is beyond the last, " +
                                       std::to_string(kind.limit - 1));
            return false;
        }
        const auto taken = [&](const auto& list) {
            return std::any_of(list.begin(), list.end(),
                               [&](const auto& item) { return item.index == *index; });
        };
        if (type->isTexture()   ? taken(entry.textures)
            : type->isSampler() ? taken(entry.samplers)
                                : taken(entry.buffers)) {
            error(parameter.range, "the " + std::string(kind.attribute) + " index " +
                                       std::to_string(*index) + " is taken already");
            return false;
        }
        return resourceParameter(parameter, *index, binding, entry);
    }
    for (const auto& attribute : parameter.attributes) {
        const auto name = attribute.name->text;
        const bool known =
            name == "stage_in" || name == "user" || name == "flat" || name == "attribute" ||
            std::any_of(std::begin(kInputs), std::end(kInputs), [&](const BuiltInName& input) {
                return input.name == name && input.stage == stage_;
            });
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

bool Lowerer::outputValue(const Type* type, std::span<const ast::Attribute> attributes, Name name,
                          Range range, Value output) {
    ir::Global global{.storage = Storage::output};
    ir::TypeId crossing = interfaceType(type);
    const auto wrong = [&](std::string_view what) {
        error(range, "'[[" + std::string(what) + "]]' cannot have the type '" + toText(type) + "'");
        return false;
    };
    if (stage_ == Stage::vertex) {
        if (find(attributes, "position") != nullptr) {
            if (!type->isVector() || type->count != 4 || !type->scalar()->isFloating()) {
                return wrong("position");
            }
            global.builtIn = BuiltIn::position;
        } else if (find(attributes, "point_size") != nullptr) {
            if (!type->isFloating()) {
                return wrong("point_size");
            }
            global.builtIn = BuiltIn::pointSize;
        } else if (find(attributes, "clip_distance") != nullptr) {
            const bool array = type->isArray() && type->element == floatType();
            if (type != floatType() && !array) {
                return wrong("clip_distance");
            }
            global.builtIn = BuiltIn::clipDistance;
            crossing = builder_.array(ir::kFloat, array ? type->length : 1);
            if (!array) {
                output = builder_.construct(crossing, std::span(&output, 1));
            }
        } else {
            const auto* user = find(attributes, "user");
            global.hasLocation = true;
            global.location =
                varyingLocation(user != nullptr && user->word != nullptr ? user->word : name);
            global.flat = find(attributes, "flat") != nullptr ||
                          (crossing != ir::kVoid && !type->scalar()->isFloating());
        }
    } else if (find(attributes, "depth") != nullptr) {
        const auto* depth = find(attributes, "depth");
        if (!type->isFloating()) {
            return wrong("depth");
        }
        global.builtIn = BuiltIn::fragDepth;
        const auto word = depth->word != nullptr ? depth->word->text : std::string_view("any");
        function_->depth = word == "greater" ? ir::DepthMode::greater
                           : word == "less"  ? ir::DepthMode::less
                                             : ir::DepthMode::any;
    } else {
        const auto* color = find(attributes, "color");
        if (color == nullptr && name != nullptr) {
            error(range, "the output '" + std::string(name->text) +
                             "' needs '[[color(n)]]' or '[[depth(any)]]'");
            return false;
        }
        global.hasLocation = true;
        if (color != nullptr) {
            const auto number = attributeNumber(*color);
            if (!number) {
                return false;
            }
            if (*number > 7) {
                error(color->range, "colour outputs go from 0 to 7");
                return false;
            }
            global.location = *number;
        }
    }
    if (crossing == ir::kVoid) {
        error(range, "an output of the type '" + toText(type) + "' is not supported");
        return false;
    }
    if (global.builtIn == BuiltIn::none) {
        output = builder_.unary(Op::bitcast, crossing, output);
    }
    const Value variable = interfaceVariable(crossing, global);
    builder_.emit(Op::store, ir::kVoid, {variable, output});
    return true;
}

bool Lowerer::storeResult(const tree::Function& function) {
    const Type* type = function.result;
    if (type->isVoid()) {
        return true;
    }
    const Value result = module_.resolve(current_[frame_->result]);
    if (type->isStruct()) {
        const auto& fields = type->structure->fields;
        for (uint32_t i = 0; i < fields.size(); ++i) {
            if (!outputValue(fields[i].type, attributesOfField(type, fields[i].name),
                             fields[i].name, function.range, builder_.extract(result, i))) {
                return false;
            }
        }
        return true;
    }
    if (stage_ == Stage::vertex) {
        // A vertex function's only result is its position.
        static NameEntry position{.text = "position"};
        ast::Attribute attribute;
        attribute.name = &position;
        return outputValue(type, std::span(&attribute, 1), nullptr, function.range, result);
    }
    return outputValue(type, function.syntax->attributes, nullptr, function.range, result);
}

Lowerer::Value Lowerer::constantSampler(uint32_t index) {
    constantSamplers_.resize(unit_->samplers.size(), ir::kNoValue);
    if (constantSamplers_[index] == ir::kNoValue) {
        const ir::Global global{.storage = Storage::resource,
                                .readOnly = true,
                                .set = stage_ == Stage::vertex ? kVertexDescriptorSet
                                                               : kFragmentDescriptorSet,
                                .binding = kConstantSamplerBinding + index};
        constantSamplers_[index] =
            interfaceVariable(builder_.type({.kind = ir::TypeKind::sampler}), global);
        usedSamplers_.push_back(index);
    }
    return constantSamplers_[index];
}

void Lowerer::entryPoint(const tree::Function& function, Module& result) {
    module_.functions.emplace_back();
    function_ = &module_.functions.back();
    function_->name = std::string(function.name->text);
    stage_ = function.stage == ast::FunctionStage::vertex ? Stage::vertex : Stage::fragment;
    function_->stage = stage_;
    function_->earlyTests = find(function.syntax->attributes, "early_fragment_tests") != nullptr;
    hoisted_.clear();
    log_.clear();
    constantSamplers_.clear();
    usedSamplers_.clear();
    EntryPoint entry;
    entry.name = function_->name;
    entry.stage = stage_;
    Frame frame;
    frame.function = &function;
    frame.slots.resize(function.variableCount);
    frame_ = &frame;
    prologue_ = builder_.makeBlock();
    builder_.start(*function_, prologue_);
    bool good = true;
    for (const auto* parameter : function.parameters) {
        good = entryParameter(*parameter, frame.slots[parameter->slot], entry) && good;
    }
    const ir::BlockId body = builder_.makeBlock();
    builder_.branch(body);
    builder_.start(*function_, body);
    frame.flag = newVariable(builder_.boolConstant(false));
    frame.result = newVariable(ir::kNoValue);
    if (!function.result->isVoid()) {
        current_[frame.result] = builder_.undefined(irType(function.result));
    }
    if (good) {
        function.active = true;
        statement(function.body);
        function.active = false;
        if (builder_.open()) {
            good = storeResult(function);
        }
        builder_.terminate(ir::Terminator::leave);
    }
    frame_ = nullptr;
    for (const uint32_t index : usedSamplers_) {
        entry.constantSamplers.push_back({kConstantSamplerBinding + index, unit_->samplers[index]});
    }
    result.entryPoints.push_back(std::move(entry));
}

} // namespace msl
