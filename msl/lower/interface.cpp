// What crosses between the stages, and what the stages take from and give to the fixed functions.
#include <algorithm>

#include "msl/library/unsupported.h"
#include "msl/lower/attributes.h"
#include "msl/lower/lower.h"

namespace msl {

using ir::BuiltIn;
using ir::Op;
using ir::Storage;

namespace {

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
    {"sample_mask", BuiltIn::sampleMask, Stage::fragment, 1, TypeKind::uintType},
    {"primitive_id", BuiltIn::primitiveId, Stage::fragment, 1, TypeKind::uintType},
    {"render_target_array_index", BuiltIn::layer, Stage::fragment, 1, TypeKind::uintType},
    {"viewport_array_index", BuiltIn::viewportIndex, Stage::fragment, 1, TypeKind::uintType},
    {"thread_index_in_simdgroup", BuiltIn::subgroupThread, Stage::fragment, 1, TypeKind::uintType},
    {"threads_per_simdgroup", BuiltIn::subgroupSize, Stage::fragment, 1, TypeKind::uintType},
    {"vertex_id", BuiltIn::vertexIndex, Stage::vertex, 1, TypeKind::uintType},
    {"instance_id", BuiltIn::instanceIndex, Stage::vertex, 1, TypeKind::uintType},
    {"base_vertex", BuiltIn::baseVertex, Stage::vertex, 1, TypeKind::uintType},
    {"base_instance", BuiltIn::baseInstance, Stage::vertex, 1, TypeKind::uintType},
};

constexpr BuiltInName kOutputs[] = {
    {"position", BuiltIn::position, Stage::vertex, 4, TypeKind::floatType},
    {"point_size", BuiltIn::pointSize, Stage::vertex, 1, TypeKind::floatType},
    {"render_target_array_index", BuiltIn::layer, Stage::vertex, 1, TypeKind::uintType},
    {"viewport_array_index", BuiltIn::viewportIndex, Stage::vertex, 1, TypeKind::uintType},
    {"depth", BuiltIn::fragDepth, Stage::fragment, 1, TypeKind::floatType},
    {"sample_mask", BuiltIn::sampleMask, Stage::fragment, 1, TypeKind::uintType},
};

const BuiltInName* findBuiltIn(std::span<const BuiltInName> rows, Stage stage,
                               std::span<const ast::Attribute> attributes) {
    for (const auto& row : rows) {
        if (row.stage == stage && findAttribute(attributes, row.name) != nullptr) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

bool Lowerer::isStageInput(std::string_view attribute) const {
    static constexpr std::string_view kMore[] = {"stage_in",
                                                 "user",
                                                 "flat",
                                                 "attribute",
                                                 "center_perspective",
                                                 "center_no_perspective",
                                                 "centroid_perspective",
                                                 "centroid_no_perspective",
                                                 "sample_perspective",
                                                 "sample_no_perspective"};
    return std::find(std::begin(kMore), std::end(kMore), attribute) != std::end(kMore) ||
           std::any_of(std::begin(kInputs), std::end(kInputs), [&](const BuiltInName& input) {
               return input.name == attribute && input.stage == stage_;
           });
}

uint32_t Lowerer::varyingLocation(Name name) {
    const auto found = std::find(varyings_.begin(), varyings_.end(), name);
    const auto index = static_cast<uint32_t>(found - varyings_.begin());
    if (found == varyings_.end()) {
        varyings_.push_back(name);
    }
    return index;
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
    if (attribute.hasNumber) {
        return attribute.number;
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
    if (const auto* input = findBuiltIn(kInputs, stage_, attributes)) {
        const Type* natural = vectorType(input->scalar, input->components);
        if (!type->isArithmetic() || type->components() != input->components) {
            error(range, "'[[" + std::string(input->name) + "]]' has the type '" + toText(natural) +
                             "', not '" + toText(type) + "'");
            return std::nullopt;
        }
        global.builtIn = input->builtIn;
        usesSubgroups_ = usesSubgroups_ || input->builtIn == BuiltIn::subgroupThread ||
                         input->builtIn == BuiltIn::subgroupSize;
        global.flat = stage_ == Stage::fragment && input->scalar == TypeKind::uintType;
        const ir::TypeId single = irType(natural);
        Value loaded = ir::kNoValue;
        if (input->builtIn == BuiltIn::sampleMask) {
            const ir::TypeId masks = builder_.array(single, 1);
            loaded = builder_.extract(
                builder_.emit(Op::load, masks, {interfaceVariable(masks, global)}), 0);
        } else {
            loaded = builder_.emit(Op::load, single, {interfaceVariable(single, global)});
        }
        return convert(loaded, natural, type);
    }
    if (stage_ == Stage::fragment && findAttribute(attributes, "color") != nullptr) {
        error(range, "reading the framebuffer through '[[color(n)]]' is not supported; bind the "
                     "picture as a texture");
        return std::nullopt;
    }
    for (const auto& attribute : attributes) {
        if (const auto reason = unsupportedReason(attribute.name->text); !reason.empty()) {
            error(attribute.range, std::string(reason));
            return std::nullopt;
        }
    }
    if (stage_ == Stage::fragment && findAttribute(attributes, "clip_distance") != nullptr) {
        return clipDistances(type, range);
    }
    if (stage_ == Stage::fragment && findAttribute(attributes, "point_size") != nullptr) {
        return zeroOf(type); // a struct that both stages share; the size ends at the rasteriser
    }
    const ir::TypeId crossing = interfaceType(type);
    if (crossing == ir::kVoid) {
        error(range, "an input of the type '" + toText(type) +
                         "' is not supported; scalars and vectors of 16 and 32 bits are");
        return std::nullopt;
    }
    global.hasLocation = true;
    if (stage_ == Stage::vertex) {
        const auto* attribute = findAttribute(attributes, "attribute");
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
        const auto* user = findAttribute(attributes, "user");
        global.location =
            varyingLocation(user != nullptr && user->word != nullptr ? user->word : name);
        global.flat = findAttribute(attributes, "flat") != nullptr || !type->scalar()->isFloating();
        global.noPerspective = findAttribute(attributes, "center_no_perspective") != nullptr ||
                               findAttribute(attributes, "centroid_no_perspective") != nullptr ||
                               findAttribute(attributes, "sample_no_perspective") != nullptr;
        global.centroid = findAttribute(attributes, "centroid_perspective") != nullptr ||
                          findAttribute(attributes, "centroid_no_perspective") != nullptr;
        global.sample = findAttribute(attributes, "sample_perspective") != nullptr ||
                        findAttribute(attributes, "sample_no_perspective") != nullptr;
    }
    const Value loaded = builder_.emit(Op::load, crossing, {interfaceVariable(crossing, global)});
    return builder_.unary(Op::bitcast, irType(type), loaded);
}

// What the vertex function has said of the clip planes, where both stages share a struct.
std::optional<Lowerer::Value> Lowerer::clipDistances(const Type* type, Range range) {
    const bool array = type->isArray() && type->element == floatType();
    if (type != floatType() && !array) {
        error(range, "'[[clip_distance]]' cannot have the type '" + toText(type) + "'");
        return std::nullopt;
    }
    const ir::TypeId crossing = builder_.array(ir::kFloat, array ? type->length : 1);
    const Value loaded =
        builder_.emit(Op::load, crossing,
                      {interfaceVariable(crossing, {.storage = Storage::input,
                                                    .builtIn = BuiltIn::clipDistance})});
    return array ? loaded : builder_.extract(loaded, 0);
}

std::optional<Lowerer::Value> Lowerer::stageIn(const tree::Variable& parameter) {
    return parameter.type->isStruct()
               ? stageInput(parameter.type, parameter.range)
               : inputValue(parameter.type, parameter.attributes, parameter.name, parameter.range);
}

// The members of a stage-in struct, those of its bases among them.
std::optional<Lowerer::Value> Lowerer::stageInput(const Type* type, Range range) {
    std::vector<Value> parts;
    for (const auto& field : type->structure->fields) {
        const auto part = field.isBase
                              ? stageInput(field.type, range)
                              : inputValue(field.type, attributesOfField(type, field.name),
                                           field.name, rangeOfField(type, field.name, range));
        if (!part) {
            return std::nullopt;
        }
        parts.push_back(*part);
    }
    return parts.empty() ? zeroOf(type) : builder_.construct(irType(type), parts);
}

bool Lowerer::outputValue(const Type* type, std::span<const ast::Attribute> attributes, Name name,
                          Range range, Value output) {
    ir::Global global{.storage = Storage::output};
    ir::TypeId crossing = interfaceType(type);
    const auto wrong = [&](std::string_view what) {
        error(range, "'[[" + std::string(what) + "]]' cannot have the type '" + toText(type) + "'");
        return false;
    };
    if (const auto* row = findBuiltIn(kOutputs, stage_, attributes)) {
        const Type* natural = vectorType(row->scalar, row->components);
        if (!type->isArithmetic() || type->components() != row->components ||
            type->scalar()->isFloating() != natural->scalar()->isFloating()) {
            return wrong(row->name);
        }
        global.builtIn = row->builtIn;
        crossing = irType(natural);
        output = convert(output, type, natural);
        if (row->builtIn == BuiltIn::sampleMask) {
            crossing = builder_.array(crossing, 1);
            output = builder_.construct(crossing, std::span(&output, 1));
        }
        if (row->builtIn == BuiltIn::fragDepth) {
            const auto* depth = findAttribute(attributes, "depth");
            const auto word = depth->word != nullptr ? depth->word->text : std::string_view("any");
            function_->depth = word == "greater" ? ir::DepthMode::greater
                               : word == "less"  ? ir::DepthMode::less
                                                 : ir::DepthMode::any;
        }
    } else if (stage_ == Stage::vertex && findAttribute(attributes, "clip_distance") != nullptr) {
        const bool array = type->isArray() && type->element == floatType();
        if (type != floatType() && !array) {
            return wrong("clip_distance");
        }
        global.builtIn = BuiltIn::clipDistance;
        crossing = builder_.array(ir::kFloat, array ? type->length : 1);
        if (!array) {
            output = builder_.construct(crossing, std::span(&output, 1));
        }
    } else if (stage_ == Stage::vertex) {
        const auto* user = findAttribute(attributes, "user");
        global.hasLocation = true;
        global.location =
            varyingLocation(user != nullptr && user->word != nullptr ? user->word : name);
        global.flat = findAttribute(attributes, "flat") != nullptr ||
                      (crossing != ir::kVoid && !type->scalar()->isFloating());
    } else {
        const auto* color = findAttribute(attributes, "color");
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
        if (const auto* source = findAttribute(attributes, "index")) {
            const auto number = attributeNumber(*source);
            if (!number || *number > 1) {
                error(source->range, "a colour is the blending's source 0 or 1");
                return false;
            }
            global.index = *number;
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

// The members of an entry point's result, those of its bases among them.
bool Lowerer::storeMembers(const Type* type, Range range, Value result) {
    const auto& fields = type->structure->fields;
    for (uint32_t i = 0; i < fields.size(); ++i) {
        const Value part = builder_.extract(result, i);
        const bool good =
            fields[i].isBase
                ? storeMembers(fields[i].type, range, part)
                : outputValue(fields[i].type, attributesOfField(type, fields[i].name),
                              fields[i].name, rangeOfField(type, fields[i].name, range), part);
        if (!good) {
            return false;
        }
    }
    return true;
}

bool Lowerer::storeResult(const tree::Function& function) {
    const Type* type = function.result;
    if (type->isVoid()) {
        return true;
    }
    const Value result = module_.resolve(current_[frame_->result]);
    if (type->isStruct()) {
        return storeMembers(type, function.range, result);
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

} // namespace msl
