#include "msl/ir/builder.h"

#include <algorithm>
#include <array>
#include <bit>

namespace msl::ir {

Builder::Builder(Module& module) : module_(module) { scalars_.reserve(256); }

// --- types

TypeId Builder::type(const TypeInfo& wanted) {
    for (size_t i = module_.types.size(); i-- > 0;) {
        if (module_.types[i] == wanted) {
            return static_cast<TypeId>(i);
        }
    }
    module_.types.push_back(wanted);
    return static_cast<TypeId>(module_.types.size() - 1);
}

TypeId Builder::matrix(uint32_t columns, uint32_t rows) {
    return type({.kind = TypeKind::matrix, .element = vectorOf(kFloat, rows), .count = columns});
}

TypeId Builder::array(TypeId element, uint32_t count, uint32_t stride) {
    return type({.kind = TypeKind::array, .element = element, .count = count, .stride = stride});
}

TypeId Builder::structure(std::span<const Member> members, bool isBlock, bool laidOut) {
    TypeInfo wanted{.kind = TypeKind::structure,
                    .isBlock = isBlock,
                    .count = static_cast<uint32_t>(members.size()),
                    .stride = laidOut ? 1U : 0U,
                    .firstMember = static_cast<uint32_t>(module_.members.size())};
    module_.members.insert(module_.members.end(), members.begin(), members.end());
    module_.types.push_back(wanted);
    return static_cast<TypeId>(module_.types.size() - 1);
}

TypeId Builder::pointer(TypeId pointee, Storage storage) {
    return type({.kind = TypeKind::pointer, .storage = storage, .element = pointee});
}

TypeId Builder::signedInt(uint32_t components) {
    const TypeId scalar = type({.kind = TypeKind::intType, .width = 32, .isSigned = true});
    return components == 1
               ? scalar
               : type({.kind = TypeKind::vector, .element = scalar, .count = components});
}

uint32_t Builder::componentCount(TypeId id) const {
    return module_.types[id].kind == TypeKind::vector ? module_.types[id].count : 1;
}

TypeId Builder::componentType(TypeId id) const {
    return module_.types[id].kind == TypeKind::vector ? module_.types[id].element : id;
}

TypeId Builder::partType(TypeId composite, uint32_t index) const {
    const auto& wanted = module_.types[composite];
    return wanted.kind == TypeKind::structure ? module_.members[wanted.firstMember + index].type
                                              : wanted.element;
}

// --- constants

Value Builder::append(Instruction instruction, std::span<const uint32_t> operands) {
    instruction.firstOperand = static_cast<uint32_t>(module_.operands.size());
    instruction.operandCount = static_cast<uint16_t>(operands.size());
    module_.operands.insert(module_.operands.end(), operands.begin(), operands.end());
    module_.instructions.push_back(instruction);
    return static_cast<Value>(module_.instructions.size() - 1);
}

Value Builder::constant(TypeId scalar, uint64_t bits) {
    const auto [found, added] = scalars_.try_emplace(Key{scalar, bits}, kNoValue);
    if (!added) {
        return found->second;
    }
    Instruction instruction{
        .op = Op::constant, .type = scalar, .extra = static_cast<uint32_t>(bits)};
    const Value value = append(instruction, {});
    if (scalar == kLong) {
        module_.instructions[value].firstOperand = static_cast<uint32_t>(module_.highBits.size());
        module_.highBits.push_back(static_cast<uint32_t>(bits >> 32U));
    }
    module_.constants.push_back(value);
    found->second = value;
    return value;
}

Value Builder::floatConstant(float value) {
    return constant(kFloat, std::bit_cast<uint32_t>(value));
}

Value Builder::specialised(TypeId scalar, uint32_t number) {
    for (const Value known : specialised_) {
        if (module_.instructions[known].extra == number && typeOf(known) == scalar) {
            return known;
        }
    }
    const Value value = append({.op = Op::specialised, .type = scalar, .extra = number}, {});
    module_.constants.push_back(value);
    specialised_.push_back(value);
    return value;
}

Value Builder::composite(TypeId wanted, std::span<const Value> parts) {
    uint64_t hash = wanted;
    for (const Value part : parts) {
        hash = (hash ^ part) * 0x9E3779B97F4A7C15U;
    }
    const auto [first, last] = composites_.equal_range(hash);
    for (auto i = first; i != last; ++i) {
        const auto& known = module_.instructions[i->second];
        const auto operands = module_.operandsOf(known);
        if (known.type == wanted &&
            std::equal(operands.begin(), operands.end(), parts.begin(), parts.end())) {
            return i->second;
        }
    }
    const std::vector<Value> copy(parts.begin(), parts.end());
    const Value value = append({.op = Op::composite, .type = wanted}, copy);
    module_.constants.push_back(value);
    composites_.emplace(hash, value);
    return value;
}

Value Builder::splat(TypeId wanted, Value scalar) {
    const uint32_t count = componentCount(wanted);
    if (count == 1) {
        return scalar;
    }
    const std::array<Value, 4> parts{scalar, scalar, scalar, scalar};
    return construct(wanted, std::span(parts).first(count));
}

Value Builder::zero(TypeId wanted) {
    const TypeInfo shape = module_.types[wanted];
    switch (shape.kind) {
    case TypeKind::vector:
    case TypeKind::matrix:
    case TypeKind::array: {
        const std::vector<Value> parts(shape.count, zero(shape.element));
        return composite(wanted, parts);
    }
    case TypeKind::structure: {
        std::vector<Value> parts;
        for (uint32_t i = 0; i < shape.count; ++i) {
            parts.push_back(zero(module_.members[shape.firstMember + i].type));
        }
        return composite(wanted, parts);
    }
    default:
        return constant(wanted, 0);
    }
}

Value Builder::undefined(TypeId wanted) {
    const auto [found, added] = scalars_.try_emplace(Key{wanted, UINT64_MAX - 1}, kNoValue);
    if (added) {
        found->second = append({.op = Op::undefined, .type = wanted}, {});
        module_.constants.push_back(found->second);
    }
    return found->second;
}

bool Builder::isConstant(Value value) const {
    const auto op = module_.instructions[value].op;
    return op == Op::constant || op == Op::composite;
}

std::optional<uint64_t> Builder::scalarBits(Value value) const {
    const auto& instruction = module_.instructions[value];
    if (instruction.op != Op::constant) {
        return std::nullopt;
    }
    if (instruction.type == kLong) {
        return (uint64_t{module_.highBits[instruction.firstOperand]} << 32U) | instruction.extra;
    }
    return instruction.extra;
}

std::optional<float> Builder::floatValue(Value value) const {
    const auto bits = scalarBits(value);
    if (!bits || typeOf(value) != kFloat) {
        return std::nullopt;
    }
    return std::bit_cast<float>(static_cast<uint32_t>(*bits));
}

bool Builder::isSplatOf(Value value, uint64_t bits) const {
    const auto& instruction = module_.instructions[value];
    if (instruction.op == Op::constant) {
        return scalarBits(value) == bits;
    }
    if (instruction.op != Op::composite ||
        module_.types[instruction.type].kind != TypeKind::vector) {
        return false;
    }
    const auto operands = module_.operandsOf(instruction);
    return std::all_of(operands.begin(), operands.end(),
                       [&](Value part) { return scalarBits(part) == bits; });
}

Value Builder::constantPart(Value value, uint32_t index) const {
    const auto& instruction = module_.instructions[value];
    return instruction.op == Op::composite ? module_.operands[instruction.firstOperand + index]
                                           : value;
}

// --- blocks

BlockId Builder::makeBlock() {
    module_.blocks.emplace_back();
    return static_cast<BlockId>(module_.blocks.size() - 1);
}

void Builder::start(Function& function, BlockId block) {
    function.layout.push_back(block);
    current_ = block;
}

bool Builder::finishTerminator(Terminator terminator) {
    if (!open()) {
        return false;
    }
    module_.blocks[current_].terminator = terminator;
    return true;
}

void Builder::branch(BlockId target) {
    if (finishTerminator(Terminator::branch)) {
        module_.blocks[current_].target = target;
        current_ = kNoBlock;
    }
}

void Builder::conditional(Value condition, BlockId whenTrue, BlockId whenFalse) {
    if (finishTerminator(Terminator::conditional)) {
        auto& block = module_.blocks[current_];
        block.condition = condition;
        block.target = whenTrue;
        block.otherTarget = whenFalse;
        current_ = kNoBlock;
    }
}

void Builder::multiway(Value selector, BlockId otherwise, std::span<const Case> cases) {
    if (finishTerminator(Terminator::multiway)) {
        auto& block = module_.blocks[current_];
        block.condition = selector;
        block.target = otherwise;
        block.firstCase = static_cast<uint32_t>(module_.cases.size());
        block.caseCount = static_cast<uint32_t>(cases.size());
        module_.cases.insert(module_.cases.end(), cases.begin(), cases.end());
        current_ = kNoBlock;
    }
}

void Builder::terminate(Terminator terminator) {
    if (finishTerminator(terminator)) {
        current_ = kNoBlock;
    }
}

void Builder::selectionMerge(BlockId merge) {
    module_.blocks[current_].merge = Merge::selection;
    module_.blocks[current_].mergeBlock = merge;
}

void Builder::loopMerge(BlockId merge, BlockId continueBlock) {
    module_.blocks[current_].merge = Merge::loop;
    module_.blocks[current_].mergeBlock = merge;
    module_.blocks[current_].continueBlock = continueBlock;
}

} // namespace msl::ir
