#include "msl/spirv/emitter.h"

#include <algorithm>
#include <array>

#include <spirv/unified1/spirv.hpp>

namespace msl::ir {
namespace {

constexpr uint32_t kVersion = 0x00010500; // SPIR-V 1.5
constexpr uint32_t kGenerator = 0;

// One of the sections of a module, in which instructions gather.
class Section {
  public:
    void begin(spv::Op op) {
        start_ = words_.size();
        words_.push_back(static_cast<uint32_t>(op));
    }
    void add(uint32_t word) { words_.push_back(word); }
    void add(std::string_view text) {
        const size_t first = words_.size();
        words_.resize(first + text.size() / 4 + 1, 0);
        for (size_t i = 0; i < text.size(); ++i) {
            words_[first + i / 4] |= uint32_t{static_cast<uint8_t>(text[i])} << (8 * (i % 4));
        }
    }
    void end() {
        words_[start_] |= static_cast<uint32_t>(words_.size() - start_) << spv::WordCountShift;
    }
    void put(spv::Op op, std::initializer_list<uint32_t> operands) {
        begin(op);
        words_.insert(words_.end(), operands.begin(), operands.end());
        end();
    }
    const std::vector<uint32_t>& words() const { return words_; }

  private:
    std::vector<uint32_t> words_;
    size_t start_ = 0;
};

class Emitter {
  public:
    explicit Emitter(const Module& module)
        : module_(module), used_(usedValues(module)), ids_(module.instructions.size(), 0),
          types_(module.types.size(), 0), blocks_(module.blocks.size(), 0) {}

    std::vector<uint32_t> run();

  private:
    uint32_t newId() { return nextId_++; }
    uint32_t idOf(Value value);
    uint32_t typeId(TypeId type);
    uint32_t blockId(BlockId block);
    uint32_t makeType(TypeId type);
    void structDecorations(TypeId type, uint32_t id);
    void imageCapabilities(const TypeInfo& shape);
    uint32_t lengthId(uint32_t length);
    uint32_t functionType();
    void constant(Value value);
    void global(const Global& global);
    void globalDecorations(const Global& global, uint32_t id);
    void function(const Function& function);
    void block(BlockId block, const Function* withLocals);
    void instruction(Value value);
    void terminator(const Block& block);
    void capability(spv::Capability wanted);
    void subgroupCapability(spv::Op op);

    const Module& module_;
    std::vector<bool> used_;
    std::vector<uint32_t> ids_;
    std::vector<uint32_t> types_;
    std::vector<uint32_t> blocks_;
    std::vector<spv::Capability> capabilities_{spv::CapabilityShader};
    std::vector<std::pair<uint32_t, uint32_t>> lengths_;
    std::vector<std::pair<TypeId, uint32_t>> typeDefinitions_;
    Section entryPoints_;
    Section modes_;
    Section names_;
    Section decorations_;
    Section definitions_;
    Section code_;
    uint32_t nextId_ = 1;
    uint32_t extended_ = 0;
    uint32_t functionType_ = 0;
};

uint32_t Emitter::idOf(Value value) {
    value = module_.resolve(value);
    if (ids_[value] == 0) {
        ids_[value] = newId();
    }
    return ids_[value];
}

uint32_t Emitter::blockId(BlockId block) {
    if (blocks_[block] == 0) {
        blocks_[block] = newId();
    }
    return blocks_[block];
}

void Emitter::capability(spv::Capability wanted) {
    if (std::find(capabilities_.begin(), capabilities_.end(), wanted) == capabilities_.end()) {
        capabilities_.push_back(wanted);
    }
}

uint32_t Emitter::typeId(TypeId type) {
    if (types_[type] == 0) {
        types_[type] = makeType(type);
    }
    return types_[type];
}

uint32_t Emitter::lengthId(uint32_t length) {
    for (const auto& [known, id] : lengths_) {
        if (known == length) {
            return id;
        }
    }
    const uint32_t type = typeId(kInt);
    const uint32_t id = newId();
    definitions_.put(spv::OpConstant, {type, id, length});
    lengths_.emplace_back(length, id);
    return id;
}

uint32_t Emitter::makeType(TypeId type) {
    const TypeInfo& shape = module_.types[type];
    switch (shape.kind) {
    case TypeKind::voidType: {
        const uint32_t id = newId();
        definitions_.put(spv::OpTypeVoid, {id});
        return id;
    }
    case TypeKind::boolType: {
        const uint32_t id = newId();
        definitions_.put(spv::OpTypeBool, {id});
        return id;
    }
    case TypeKind::intType: {
        if (shape.width == 64) {
            capability(spv::CapabilityInt64);
        }
        const uint32_t id = newId();
        definitions_.put(spv::OpTypeInt, {id, shape.width, shape.isSigned ? 1U : 0U});
        return id;
    }
    case TypeKind::floatType: {
        const uint32_t id = newId();
        definitions_.put(spv::OpTypeFloat, {id, shape.width});
        return id;
    }
    case TypeKind::vector:
    case TypeKind::matrix: {
        const uint32_t element = typeId(shape.element);
        const uint32_t id = newId();
        definitions_.put(shape.kind == TypeKind::vector ? spv::OpTypeVector : spv::OpTypeMatrix,
                         {id, element, shape.count});
        return id;
    }
    case TypeKind::array: {
        const uint32_t element = typeId(shape.element);
        uint32_t id = 0;
        if (shape.count == 0) {
            id = newId();
            definitions_.put(spv::OpTypeRuntimeArray, {id, element});
        } else {
            const uint32_t length = lengthId(shape.count);
            id = newId();
            definitions_.put(spv::OpTypeArray, {id, element, length});
        }
        if (shape.stride != 0) {
            decorations_.put(spv::OpDecorate, {id, spv::DecorationArrayStride, shape.stride});
        }
        return id;
    }
    case TypeKind::structure: {
        std::vector<uint32_t> members;
        for (uint32_t i = 0; i < shape.count; ++i) {
            members.push_back(typeId(module_.members[shape.firstMember + i].type));
        }
        const uint32_t id = newId();
        definitions_.begin(spv::OpTypeStruct);
        definitions_.add(id);
        for (const uint32_t member : members) {
            definitions_.add(member);
        }
        definitions_.end();
        structDecorations(type, id);
        return id;
    }
    case TypeKind::pointer: {
        static constexpr spv::StorageClass kClasses[] = {
            spv::StorageClassFunction,       spv::StorageClassInput,
            spv::StorageClassOutput,         spv::StorageClassFunction,
            spv::StorageClassPrivate,        spv::StorageClassStorageBuffer,
            spv::StorageClassUniformConstant};
        const uint32_t pointee = typeId(shape.element);
        const uint32_t id = newId();
        definitions_.put(
            spv::OpTypePointer,
            {id, static_cast<uint32_t>(kClasses[static_cast<size_t>(shape.storage)]), pointee});
        return id;
    }
    case TypeKind::image: {
        static constexpr spv::Dim kDims[] = {spv::Dim1D, spv::Dim2D, spv::Dim3D, spv::DimCube,
                                             spv::DimBuffer};
        const uint32_t element = typeId(shape.element);
        const uint32_t id = newId();
        imageCapabilities(shape);
        definitions_.put(spv::OpTypeImage,
                         {id, element, static_cast<uint32_t>(kDims[static_cast<size_t>(shape.dim)]),
                          shape.depth ? 1U : 0U, shape.arrayed ? 1U : 0U,
                          shape.multisampled ? 1U : 0U, shape.storageImage ? 2U : 1U,
                          spv::ImageFormatUnknown});
        return id;
    }
    case TypeKind::sampler: {
        const uint32_t id = newId();
        definitions_.put(spv::OpTypeSampler, {id});
        return id;
    }
    case TypeKind::sampledImage: {
        const uint32_t image = typeId(shape.element);
        const uint32_t id = newId();
        definitions_.put(spv::OpTypeSampledImage, {id, image});
        return id;
    }
    }
    return 0;
}

void Emitter::imageCapabilities(const TypeInfo& shape) {
    if (shape.storageImage) {
        capability(spv::CapabilityStorageImageWriteWithoutFormat);
        capability(spv::CapabilityStorageImageReadWithoutFormat);
    }
    if (shape.dim == ImageDim::dim1d) {
        capability(shape.storageImage ? spv::CapabilityImage1D : spv::CapabilitySampled1D);
    }
    if (shape.dim == ImageDim::buffer) {
        capability(shape.storageImage ? spv::CapabilityImageBuffer : spv::CapabilitySampledBuffer);
    }
    if (shape.dim == ImageDim::cube && shape.arrayed) {
        capability(shape.storageImage ? spv::CapabilityImageCubeArray
                                      : spv::CapabilitySampledCubeArray);
    }
}

void Emitter::structDecorations(TypeId type, uint32_t id) {
    const TypeInfo& shape = module_.types[type];
    if (shape.isBlock) {
        decorations_.put(spv::OpDecorate, {id, spv::DecorationBlock});
    }
    if (shape.stride == 0) {
        return;
    }
    for (uint32_t i = 0; i < shape.count; ++i) {
        const Member& member = module_.members[shape.firstMember + i];
        decorations_.put(spv::OpMemberDecorate, {id, i, spv::DecorationOffset, member.offset});
        if (member.matrixStride != 0) {
            decorations_.put(spv::OpMemberDecorate, {id, i, spv::DecorationColMajor});
            decorations_.put(spv::OpMemberDecorate,
                             {id, i, spv::DecorationMatrixStride, member.matrixStride});
        }
    }
}

uint32_t Emitter::functionType() {
    if (functionType_ == 0) {
        const uint32_t result = typeId(kVoid);
        functionType_ = newId();
        definitions_.put(spv::OpTypeFunction, {functionType_, result});
    }
    return functionType_;
}

void Emitter::constant(Value value) {
    const auto& instruction = module_.instructions[value];
    const uint32_t type = typeId(instruction.type);
    const uint32_t id = idOf(value);
    switch (instruction.op) {
    case Op::constant:
        if (instruction.type == kBool) {
            definitions_.put(instruction.extra != 0 ? spv::OpConstantTrue : spv::OpConstantFalse,
                             {type, id});
        } else if (instruction.type == kLong) {
            definitions_.put(spv::OpConstant, {type, id, instruction.extra,
                                               module_.highBits[instruction.firstOperand]});
        } else {
            definitions_.put(spv::OpConstant, {type, id, instruction.extra});
        }
        break;
    case Op::specialised:
        if (instruction.type == kBool) {
            definitions_.put(spv::OpSpecConstantFalse, {type, id});
        } else {
            definitions_.put(spv::OpSpecConstant, {type, id, 0});
        }
        decorations_.put(spv::OpDecorate, {id, spv::DecorationSpecId, instruction.extra});
        break;
    case Op::composite: {
        definitions_.begin(spv::OpConstantComposite);
        definitions_.add(type);
        definitions_.add(id);
        for (const Value part : module_.operandsOf(instruction)) {
            definitions_.add(idOf(part));
        }
        definitions_.end();
        break;
    }
    default:
        definitions_.put(spv::OpUndef, {type, id});
        break;
    }
}

void Emitter::globalDecorations(const Global& global, uint32_t id) {
    static constexpr spv::BuiltIn kBuiltIns[] = {
        spv::BuiltInPosition,     spv::BuiltInPosition,      spv::BuiltInFragCoord,
        spv::BuiltInVertexIndex,  spv::BuiltInInstanceIndex, spv::BuiltInBaseVertex,
        spv::BuiltInBaseInstance, spv::BuiltInFrontFacing,   spv::BuiltInPointCoord,
        spv::BuiltInPointSize,    spv::BuiltInSampleId,      spv::BuiltInSampleMask,
        spv::BuiltInFragDepth,    spv::BuiltInClipDistance,  spv::BuiltInPrimitiveId,
        spv::BuiltInLayer,        spv::BuiltInViewportIndex, spv::BuiltInSubgroupLocalInvocationId,
        spv::BuiltInSubgroupSize};
    const auto decorate = [&](spv::Decoration decoration) {
        decorations_.put(spv::OpDecorate, {id, static_cast<uint32_t>(decoration)});
    };
    if (global.builtIn != BuiltIn::none) {
        decorations_.put(spv::OpDecorate,
                         {id, spv::DecorationBuiltIn,
                          static_cast<uint32_t>(kBuiltIns[static_cast<size_t>(global.builtIn)])});
        switch (global.builtIn) {
        case BuiltIn::sampleId:
            capability(spv::CapabilitySampleRateShading);
            break;
        case BuiltIn::clipDistance:
            capability(spv::CapabilityClipDistance);
            break;
        case BuiltIn::primitiveId:
            capability(spv::CapabilityGeometry);
            break;
        case BuiltIn::layer:
            capability(spv::CapabilityShaderLayer);
            break;
        case BuiltIn::viewportIndex:
            capability(spv::CapabilityShaderViewportIndex);
            break;
        case BuiltIn::subgroupThread:
        case BuiltIn::subgroupSize:
            capability(spv::CapabilityGroupNonUniform);
            break;
        case BuiltIn::baseVertex:
        case BuiltIn::baseInstance:
            capability(spv::CapabilityDrawParameters);
            break;
        default:
            break;
        }
    }
    if (global.hasLocation) {
        decorations_.put(spv::OpDecorate, {id, spv::DecorationLocation, global.location});
    }
    if (global.index != 0) {
        decorations_.put(spv::OpDecorate, {id, spv::DecorationIndex, global.index});
    }
    if (global.flat) {
        decorate(spv::DecorationFlat);
    }
    if (global.noPerspective) {
        decorate(spv::DecorationNoPerspective);
    }
    if (global.centroid) {
        decorate(spv::DecorationCentroid);
    }
    if (global.sample) {
        decorate(spv::DecorationSample);
        capability(spv::CapabilitySampleRateShading);
    }
    if (global.storage == Storage::buffer || global.storage == Storage::resource) {
        decorations_.put(spv::OpDecorate, {id, spv::DecorationDescriptorSet, global.set});
        decorations_.put(spv::OpDecorate, {id, spv::DecorationBinding, global.binding});
    }
    if (global.storage == Storage::buffer && global.readOnly) {
        decorate(spv::DecorationNonWritable);
    }
}

void Emitter::global(const Global& item) {
    if (!used_[item.variable]) {
        return;
    }
    const auto& instruction = module_.instructions[item.variable];
    static constexpr spv::StorageClass kClasses[] = {
        spv::StorageClassPrivate,        spv::StorageClassInput,   spv::StorageClassOutput,
        spv::StorageClassFunction,       spv::StorageClassPrivate, spv::StorageClassStorageBuffer,
        spv::StorageClassUniformConstant};
    const uint32_t type = typeId(instruction.type);
    const uint32_t id = idOf(item.variable);
    const auto storage = static_cast<uint32_t>(kClasses[static_cast<size_t>(item.storage)]);
    if (item.initializer != kNoValue) {
        definitions_.put(spv::OpVariable, {type, id, storage, idOf(item.initializer)});
    } else {
        definitions_.put(spv::OpVariable, {type, id, storage});
    }
    globalDecorations(item, id);
}

void Emitter::subgroupCapability(spv::Op op) {
    capability(spv::CapabilityGroupNonUniform);
    switch (op) {
    case spv::OpGroupNonUniformElect:
        break;
    case spv::OpGroupNonUniformAll:
    case spv::OpGroupNonUniformAny:
        capability(spv::CapabilityGroupNonUniformVote);
        break;
    case spv::OpGroupNonUniformBroadcast:
    case spv::OpGroupNonUniformBroadcastFirst:
        capability(spv::CapabilityGroupNonUniformBallot);
        break;
    case spv::OpGroupNonUniformShuffle:
    case spv::OpGroupNonUniformShuffleXor:
        capability(spv::CapabilityGroupNonUniformShuffle);
        break;
    case spv::OpGroupNonUniformShuffleUp:
    case spv::OpGroupNonUniformShuffleDown:
        capability(spv::CapabilityGroupNonUniformShuffleRelative);
        break;
    case spv::OpGroupNonUniformQuadBroadcast:
        capability(spv::CapabilityGroupNonUniformQuad);
        break;
    default:
        capability(spv::CapabilityGroupNonUniformArithmetic);
        break;
    }
}

void Emitter::instruction(Value value) {
    const auto& item = module_.instructions[value];
    const OpInfo& row = info(item.op);
    const auto operands = module_.operandsOf(item);
    // Types may have to be defined first, which must not happen inside the instruction.
    const uint32_t type = row.hasResult ? typeId(item.type) : 0;
    switch (item.op) {
    case Op::dpdx:
    case Op::dpdy:
    case Op::fwidth:
        break;
    case Op::querySize:
    case Op::queryLevels:
    case Op::querySizeOnly:
    case Op::querySamples:
    case Op::queryLod:
        capability(spv::CapabilityImageQuery);
        break;
    default:
        break;
    }
    if (item.op == Op::subgroup) {
        subgroupCapability(static_cast<spv::Op>(item.extra & 0xFFFFU));
        code_.begin(static_cast<spv::Op>(item.extra & 0xFFFFU));
    } else {
        code_.begin(static_cast<spv::Op>(row.spirv));
    }
    if (row.hasResult) {
        code_.add(type);
        code_.add(idOf(value));
    }
    if (item.op == Op::extended) {
        code_.add(extended_);
        code_.add(item.extra);
    }
    const size_t values = module_.valuesOf(item).size();
    size_t maskAt = operands.size() + 1;
    if (item.op >= Op::sampleImplicit && item.op <= Op::drefGather && item.extra != 0) {
        const bool three = item.op == Op::sampleDrefImplicit || item.op == Op::sampleDrefExplicit ||
                           item.op == Op::gather || item.op == Op::drefGather;
        maskAt = three ? 3 : 2;
    }
    for (size_t i = 0; i < operands.size(); ++i) {
        if (i == maskAt) {
            code_.add(item.extra);
        }
        if (i == 1 && item.op == Op::subgroup && item.extra >> 16U != 0) {
            code_.add((item.extra >> 16U) - 1);
        }
        code_.add(i < values ? idOf(operands[i]) : operands[i]);
    }
    code_.end();
}

void Emitter::terminator(const Block& at) {
    if (at.merge == Merge::selection) {
        code_.put(spv::OpSelectionMerge, {blockId(at.mergeBlock), spv::SelectionControlMaskNone});
    } else if (at.merge == Merge::loop) {
        code_.put(spv::OpLoopMerge,
                  {blockId(at.mergeBlock), blockId(at.continueBlock), spv::LoopControlMaskNone});
    }
    switch (at.terminator) {
    case Terminator::branch:
        code_.put(spv::OpBranch, {blockId(at.target)});
        break;
    case Terminator::conditional:
        code_.put(spv::OpBranchConditional,
                  {idOf(at.condition), blockId(at.target), blockId(at.otherTarget)});
        break;
    case Terminator::multiway:
        code_.begin(spv::OpSwitch);
        code_.add(idOf(at.condition));
        code_.add(blockId(at.target));
        for (uint32_t i = 0; i < at.caseCount; ++i) {
            code_.add(module_.cases[at.firstCase + i].value);
            code_.add(blockId(module_.cases[at.firstCase + i].target));
        }
        code_.end();
        break;
    case Terminator::leave:
        code_.put(spv::OpReturn, {});
        break;
    case Terminator::discard:
        code_.put(spv::OpKill, {});
        break;
    case Terminator::none:
    case Terminator::unreachable:
        code_.put(spv::OpUnreachable, {});
        break;
    }
}

void Emitter::block(BlockId id, const Function* withLocals) {
    const Block& at = module_.blocks[id];
    code_.put(spv::OpLabel, {blockId(id)});
    if (withLocals != nullptr) {
        for (const Value variable : withLocals->locals) {
            if (used_[variable]) {
                const uint32_t type = typeId(module_.instructions[variable].type);
                code_.put(spv::OpVariable, {type, idOf(variable), spv::StorageClassFunction});
            }
        }
    }
    for (Value phi = at.firstPhi; phi != kNoValue; phi = module_.instructions[phi].next) {
        if (module_.resolve(phi) != phi || !used_[phi]) {
            continue;
        }
        const auto& item = module_.instructions[phi];
        const uint32_t type = typeId(item.type);
        const auto operands = module_.operandsOf(item);
        code_.begin(spv::OpPhi);
        code_.add(type);
        code_.add(idOf(phi));
        for (size_t i = 0; i < operands.size(); i += 2) {
            code_.add(idOf(operands[i]));
            code_.add(blockId(operands[i + 1]));
        }
        code_.end();
    }
    for (Value value = at.first; value != kNoValue; value = module_.instructions[value].next) {
        if (used_[value]) {
            instruction(value);
        }
    }
    terminator(at);
}

void Emitter::function(const Function& item) {
    const uint32_t id = newId();
    const uint32_t result = typeId(kVoid);
    const uint32_t type = functionType();
    entryPoints_.begin(spv::OpEntryPoint);
    entryPoints_.add(item.stage == Stage::vertex ? spv::ExecutionModelVertex
                                                 : spv::ExecutionModelFragment);
    entryPoints_.add(id);
    entryPoints_.add(item.name);
    for (const Value variable : item.interface) {
        entryPoints_.add(idOf(variable));
    }
    entryPoints_.end();
    names_.begin(spv::OpName);
    names_.add(id);
    names_.add(item.name);
    names_.end();
    if (item.stage == Stage::fragment) {
        modes_.put(spv::OpExecutionMode, {id, spv::ExecutionModeOriginUpperLeft});
        if (item.earlyTests) {
            modes_.put(spv::OpExecutionMode, {id, spv::ExecutionModeEarlyFragmentTests});
        }
        if (item.depth != DepthMode::none) {
            modes_.put(spv::OpExecutionMode, {id, spv::ExecutionModeDepthReplacing});
        }
        if (item.depth == DepthMode::greater || item.depth == DepthMode::less) {
            modes_.put(spv::OpExecutionMode,
                       {id, item.depth == DepthMode::greater
                                ? static_cast<uint32_t>(spv::ExecutionModeDepthGreater)
                                : static_cast<uint32_t>(spv::ExecutionModeDepthLess)});
        }
    }
    code_.put(spv::OpFunction, {result, id, spv::FunctionControlMaskNone, type});
    for (size_t i = 0; i < item.layout.size(); ++i) {
        block(item.layout[i], i == 0 ? &item : nullptr);
    }
    code_.put(spv::OpFunctionEnd, {});
}

std::vector<uint32_t> Emitter::run() {
    extended_ = newId();
    for (const Value value : module_.constants) {
        if (used_[value]) {
            constant(value);
        }
    }
    for (const auto& item : module_.globals) {
        global(item);
    }
    for (const auto& item : module_.functions) {
        function(item);
    }
    std::vector<uint32_t> words{spv::MagicNumber, kVersion, kGenerator, nextId_, 0};
    Section head;
    for (const auto wanted : capabilities_) {
        head.put(spv::OpCapability, {static_cast<uint32_t>(wanted)});
    }
    if (std::find(capabilities_.begin(), capabilities_.end(), spv::CapabilityDrawParameters) !=
        capabilities_.end()) {
        head.begin(spv::OpExtension);
        head.add(std::string_view("SPV_KHR_shader_draw_parameters"));
        head.end();
    }
    head.begin(spv::OpExtInstImport);
    head.add(extended_);
    head.add(std::string_view("GLSL.std.450"));
    head.end();
    head.put(spv::OpMemoryModel, {spv::AddressingModelLogical, spv::MemoryModelGLSL450});
    size_t total = words.size();
    const std::array<const Section*, 7> sections{&head,         &entryPoints_, &modes_, &names_,
                                                 &decorations_, &definitions_, &code_};
    for (const auto* section : sections) {
        total += section->words().size();
    }
    words.reserve(total);
    for (const auto* section : sections) {
        words.insert(words.end(), section->words().begin(), section->words().end());
    }
    return words;
}

} // namespace
} // namespace msl::ir

namespace msl {

std::vector<uint32_t> emitSpirv(const ir::Module& module) { return ir::Emitter(module).run(); }

} // namespace msl
