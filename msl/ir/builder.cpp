#include "msl/ir/builder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include <spirv/unified1/GLSL.std.450.h>

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

// --- instructions

void Builder::link(Value value) {
    auto& block = module_.blocks[current_];
    if (block.first == kNoValue) {
        block.first = value;
    } else {
        module_.instructions[block.last].next = value;
    }
    block.last = value;
}

Value Builder::emit(Op op, TypeId wanted, std::span<const uint32_t> operands, uint32_t extra) {
    const Value value = append({.op = op, .type = wanted, .extra = extra}, operands);
    if (open()) {
        link(value);
    }
    return value;
}

Value Builder::phi(BlockId block, TypeId wanted, uint32_t operandRoom) {
    const std::vector<uint32_t> room(operandRoom, 0);
    const Value value = append({.op = Op::phi, .type = wanted}, room);
    auto& owner = module_.blocks[block];
    if (owner.firstPhi == kNoValue) {
        owner.firstPhi = value;
    } else {
        module_.instructions[owner.lastPhi].next = value;
    }
    owner.lastPhi = value;
    return value;
}

Value Builder::finishPhi(Value value, std::span<const uint32_t> pairs) {
    auto& instruction = module_.instructions[value];
    Value only = kNoValue;
    bool trivial = true;
    for (size_t i = 0; i < pairs.size(); i += 2) {
        const Value operand = module_.resolve(pairs[i]);
        if (operand == value || operand == only) {
            continue;
        }
        trivial = trivial && only == kNoValue;
        only = operand;
    }
    std::copy(pairs.begin(), pairs.end(),
              module_.operands.begin() + static_cast<ptrdiff_t>(instruction.firstOperand));
    instruction.operandCount = static_cast<uint16_t>(pairs.size());
    if (trivial && only != kNoValue) {
        if (module_.replaced.size() <= value) {
            module_.replaced.resize(module_.instructions.size());
        }
        module_.replaced[value] = only;
        return only;
    }
    return value;
}

Value Builder::variable(TypeId pointee, Storage storage, Function* function) {
    const TypeId type = pointer(pointee, storage);
    const Value value =
        append({.op = Op::variable, .type = type, .extra = static_cast<uint32_t>(storage)}, {});
    if (function != nullptr) {
        function->locals.push_back(value);
    }
    return value;
}

Value Builder::unary(Op op, TypeId wanted, Value a) {
    if (const Value folded = foldUnary(op, wanted, a); folded != kNoValue) {
        return folded;
    }
    const auto& inner = module_.instructions[a];
    const bool involution = op == Op::fNegate || op == Op::logicalNot || op == Op::bitNot ||
                            op == Op::sNegate || op == Op::transpose;
    if (involution && inner.op == op) {
        return module_.operands[inner.firstOperand];
    }
    if (op == Op::bitcast && typeOf(a) == wanted) {
        return a;
    }
    return emit(op, wanted, {a});
}

Value Builder::foldUnary(Op op, TypeId wanted, Value a) {
    if (!isConstant(a) || module_.types[typeOf(a)].kind > TypeKind::vector) {
        return kNoValue;
    }
    if (op == Op::any || op == Op::all) {
        bool result = op == Op::all;
        for (uint32_t i = 0; i < componentCount(typeOf(a)); ++i) {
            const bool part = scalarBits(constantPart(a, i)).value_or(0) != 0;
            result = op == Op::all ? result && part : result || part;
        }
        return boolConstant(result);
    }
    const uint32_t count = componentCount(wanted);
    if (count != componentCount(typeOf(a))) {
        return kNoValue;
    }
    const TypeId from = componentType(typeOf(a));
    const TypeId to = componentType(wanted);
    if (op == Op::bitcast && (from == kLong) != (to == kLong)) {
        return kNoValue;
    }
    if (to > kLong) {
        return kNoValue;
    }
    std::array<Value, 4> parts{};
    for (uint32_t i = 0; i < count; ++i) {
        const auto bits = scalarBits(constantPart(a, i));
        if (!bits) {
            return kNoValue;
        }
        const auto folded = op == Op::bitcast ? bits : foldScalar(op, from, to, *bits);
        if (!folded) {
            return kNoValue;
        }
        parts[i] = constant(to, *folded);
    }
    return count == 1 ? parts[0] : composite(wanted, std::span(parts).first(count));
}

Value Builder::foldBinary(Op op, TypeId wanted, Value a, Value b) {
    const TypeId type = typeOf(a);
    if (!isConstant(a) || !isConstant(b) || type != typeOf(b) ||
        module_.types[type].kind > TypeKind::vector ||
        componentCount(wanted) != componentCount(type)) {
        return kNoValue;
    }
    const uint32_t count = componentCount(type);
    std::array<Value, 4> parts{};
    for (uint32_t i = 0; i < count; ++i) {
        const auto left = scalarBits(constantPart(a, i));
        const auto right = scalarBits(constantPart(b, i));
        if (!left || !right) {
            return kNoValue;
        }
        const auto folded = foldScalar(op, componentType(type), *left, *right);
        if (!folded) {
            return kNoValue;
        }
        parts[i] = constant(componentType(wanted), *folded);
    }
    return count == 1 ? parts[0] : composite(wanted, std::span(parts).first(count));
}

// Identities, with the freedom that Metal's default of fast mathematics gives for floats.
Value Builder::simplifyBinary(Op op, TypeId wanted, Value a, Value b) {
    constexpr uint64_t kOne = 0x3F800000U;
    constexpr uint64_t kMinusOne = 0xBF800000U;
    constexpr uint64_t kMinusZero = 0x80000000U;
    const auto zeroLike = [&](Value value) {
        return isSplatOf(value, 0) || isSplatOf(value, kMinusZero);
    };
    switch (op) {
    case Op::fAdd:
        if (zeroLike(a)) {
            return b;
        }
        if (zeroLike(b)) {
            return a;
        }
        break;
    case Op::fSub:
        if (zeroLike(b)) {
            return a;
        }
        if (zeroLike(a)) {
            return unary(Op::fNegate, wanted, b);
        }
        break;
    case Op::fMul:
        if (isSplatOf(a, kOne)) {
            return b;
        }
        if (isSplatOf(b, kOne)) {
            return a;
        }
        if (isSplatOf(a, 0) || isSplatOf(b, 0)) {
            return zero(wanted);
        }
        if (isSplatOf(a, kMinusOne)) {
            return unary(Op::fNegate, wanted, b);
        }
        if (isSplatOf(b, kMinusOne)) {
            return unary(Op::fNegate, wanted, a);
        }
        break;
    case Op::fDiv: {
        if (isSplatOf(b, kOne)) {
            return a;
        }
        if (!isConstant(b)) {
            break;
        }
        // Dividing by a power of two is multiplying by its inverse, exactly.
        const auto divisor = floatValue(constantPart(b, 0));
        if (divisor && isSplatOf(b, std::bit_cast<uint32_t>(*divisor))) {
            int exponent = 0;
            if (std::abs(std::frexp(*divisor, &exponent)) == 0.5F && std::abs(exponent) < 100) {
                return binary(Op::fMul, wanted, a, splat(wanted, floatConstant(1.0F / *divisor)));
            }
        }
        break;
    }
    case Op::iAdd:
    case Op::bitOr:
    case Op::bitXor:
        if (isSplatOf(a, 0)) {
            return b;
        }
        if (isSplatOf(b, 0)) {
            return a;
        }
        break;
    case Op::iSub:
    case Op::shiftLeft:
    case Op::shiftRightLogical:
    case Op::shiftRightArithmetic:
        if (isSplatOf(b, 0)) {
            return a;
        }
        break;
    case Op::iMul:
        if (isSplatOf(a, 1)) {
            return b;
        }
        if (isSplatOf(b, 1)) {
            return a;
        }
        if (isSplatOf(a, 0) || isSplatOf(b, 0)) {
            return zero(wanted);
        }
        break;
    case Op::sDiv:
    case Op::uDiv:
        if (isSplatOf(b, 1)) {
            return a;
        }
        break;
    case Op::bitAnd:
        if (isSplatOf(a, 0) || isSplatOf(b, 0)) {
            return zero(wanted);
        }
        break;
    case Op::logicalAnd:
        if (isSplatOf(a, 1) || isSplatOf(b, 0)) {
            return b;
        }
        if (isSplatOf(b, 1) || isSplatOf(a, 0)) {
            return a;
        }
        break;
    case Op::logicalOr:
        if (isSplatOf(a, 0) || isSplatOf(b, 1)) {
            return b;
        }
        if (isSplatOf(b, 0) || isSplatOf(a, 1)) {
            return a;
        }
        break;
    case Op::vectorTimesScalar:
        if (isSplatOf(b, kOne)) {
            return a;
        }
        if (isSplatOf(b, 0) || isSplatOf(a, 0)) {
            return zero(wanted);
        }
        if (isConstant(a) && isConstant(b)) {
            return binary(Op::fMul, wanted, a, splat(wanted, b));
        }
        break;
    default:
        break;
    }
    return kNoValue;
}

Value Builder::binary(Op op, TypeId wanted, Value a, Value b) {
    if (const Value folded = foldBinary(op, wanted, a, b); folded != kNoValue) {
        return folded;
    }
    if (const Value simpler = simplifyBinary(op, wanted, a, b); simpler != kNoValue) {
        return simpler;
    }
    return emit(op, wanted, {a, b});
}

Value Builder::select(TypeId wanted, Value condition, Value a, Value b) {
    if (a == b || isSplatOf(condition, 1)) {
        return a;
    }
    if (isSplatOf(condition, 0)) {
        return b;
    }
    if (isConstant(condition) && componentCount(typeOf(condition)) > 1) {
        std::array<Value, 4> parts{};
        const uint32_t count = componentCount(wanted);
        for (uint32_t i = 0; i < count; ++i) {
            parts[i] = extract(scalarBits(constantPart(condition, i)).value_or(0) != 0 ? a : b, i);
        }
        return construct(wanted, std::span(parts).first(count));
    }
    return emit(Op::select, wanted, {condition, a, b});
}

Value Builder::construct(TypeId wanted, std::span<const Value> parts) {
    if (std::all_of(parts.begin(), parts.end(), [&](Value part) { return isConstant(part); }) &&
        parts.size() == (module_.types[wanted].kind == TypeKind::vector ||
                                 module_.types[wanted].kind == TypeKind::matrix ||
                                 module_.types[wanted].kind == TypeKind::array ||
                                 module_.types[wanted].kind == TypeKind::structure
                             ? module_.types[wanted].count
                             : 0)) {
        return composite(wanted, parts);
    }
    // Taking a value apart and putting it together again gives the value.
    const auto& first = module_.instructions[parts[0]];
    if (first.op == Op::extract && first.operandCount == 2) {
        const Value source = module_.operands[first.firstOperand];
        bool same = typeOf(source) == wanted;
        for (uint32_t i = 0; same && i < parts.size(); ++i) {
            const auto& part = module_.instructions[parts[i]];
            same = part.op == Op::extract && part.operandCount == 2 &&
                   module_.operands[part.firstOperand] == source &&
                   module_.operands[part.firstOperand + 1] == i;
        }
        if (same && parts.size() == module_.types[wanted].count) {
            return source;
        }
    }
    return emit(Op::construct, wanted, parts);
}

Value Builder::extract(Value composite, uint32_t index) {
    // Walks through what built the composite to the part itself, where it can be seen.
    for (Value at = composite;;) {
        const auto& instruction = module_.instructions[at];
        const auto operands = module_.operandsOf(instruction);
        if (instruction.op == Op::composite) {
            return operands[index];
        }
        if (instruction.op == Op::construct &&
            operands.size() == module_.types[instruction.type].count) {
            return operands[index];
        }
        if (instruction.op == Op::insert && operands.size() == 3) {
            if (operands[2] == index) {
                return operands[0];
            }
            at = operands[1];
            composite = at;
            continue;
        }
        if (instruction.op == Op::shuffle) {
            const uint32_t count = componentCount(typeOf(operands[0]));
            const uint32_t source = operands[2 + index];
            at = source < count ? operands[0] : operands[1];
            index = source < count ? source : source - count;
            composite = at;
            continue;
        }
        break;
    }
    return emit(Op::extract, partType(typeOf(composite), index), {composite, index});
}

Value Builder::insert(Value composite, Value part, uint32_t index) {
    const auto& instruction = module_.instructions[composite];
    const auto& shape = module_.types[instruction.type];
    if (isConstant(composite) ||
        (instruction.op == Op::construct && instruction.operandCount == shape.count) ||
        instruction.op == Op::undefined) {
        if (instruction.op != Op::undefined && shape.count <= 64) {
            const auto operands = module_.operandsOf(instruction);
            std::vector<Value> parts(operands.begin(), operands.end());
            parts[index] = part;
            return construct(typeOf(composite), parts);
        }
    }
    return emit(Op::insert, typeOf(composite), {part, composite, index});
}

Value Builder::extractDynamic(Value vector, Value index) {
    if (const auto bits = scalarBits(index)) {
        return extract(vector, static_cast<uint32_t>(*bits) % componentCount(typeOf(vector)));
    }
    return emit(Op::extractDynamic, componentType(typeOf(vector)), {vector, index});
}

Value Builder::insertDynamic(Value vector, Value part, Value index) {
    if (const auto bits = scalarBits(index)) {
        return insert(vector, part, static_cast<uint32_t>(*bits) % componentCount(typeOf(vector)));
    }
    return emit(Op::insertDynamic, typeOf(vector), {vector, part, index});
}

Value Builder::shuffle(Value vector, std::span<const uint32_t> components) {
    const TypeId scalar = componentType(typeOf(vector));
    if (components.size() == 1) {
        return componentCount(typeOf(vector)) == 1 ? vector : extract(vector, components[0]);
    }
    const TypeId wanted = vectorOf(scalar, static_cast<uint32_t>(components.size()));
    if (componentCount(typeOf(vector)) == 1) {
        return splat(wanted, vector);
    }
    bool identity = wanted == typeOf(vector);
    for (uint32_t i = 0; i < components.size(); ++i) {
        identity = identity && components[i] == i;
    }
    if (identity) {
        return vector;
    }
    const auto& instruction = module_.instructions[vector];
    if (isConstant(vector) || (instruction.op == Op::construct &&
                               instruction.operandCount == componentCount(instruction.type))) {
        std::array<Value, 4> parts{};
        for (uint32_t i = 0; i < components.size(); ++i) {
            parts[i] = module_.operands[instruction.firstOperand + components[i]];
        }
        return construct(wanted, std::span(parts).first(components.size()));
    }
    std::array<uint32_t, 6> operands{vector, vector};
    std::copy(components.begin(), components.end(), operands.begin() + 2);
    return emit(Op::shuffle, wanted, std::span(operands).first(components.size() + 2));
}

Value Builder::extended(uint32_t number, TypeId wanted, std::initializer_list<Value> operands) {
    const std::span<const Value> values(operands.begin(), operands.size());
    if (const Value folded = foldExtended(number, wanted, values); folded != kNoValue) {
        return folded;
    }
    return emit(Op::extended, wanted, values, number);
}

// Folds the functions whose results every device must give alike.
Value Builder::foldExtended(uint32_t number, TypeId wanted, std::span<const Value> operands) {
    if (!std::all_of(operands.begin(), operands.end(),
                     [&](Value operand) { return isConstant(operand); }) ||
        componentType(wanted) != kFloat || module_.types[wanted].kind > TypeKind::vector) {
        return kNoValue;
    }
    const uint32_t count = componentCount(wanted);
    std::array<Value, 4> parts{};
    for (uint32_t i = 0; i < count; ++i) {
        std::array<float, 3> x{};
        for (size_t j = 0; j < operands.size() && j < 3; ++j) {
            const auto value = floatValue(constantPart(operands[j], i));
            if (!value || componentCount(typeOf(operands[j])) != count) {
                return kNoValue;
            }
            x[j] = *value;
        }
        float result = 0;
        switch (number) {
        case GLSLstd450FAbs:
            result = std::fabs(x[0]);
            break;
        case GLSLstd450Floor:
            result = std::floor(x[0]);
            break;
        case GLSLstd450Ceil:
            result = std::ceil(x[0]);
            break;
        case GLSLstd450Trunc:
            result = std::trunc(x[0]);
            break;
        case GLSLstd450Fract:
            result = x[0] - std::floor(x[0]);
            break;
        case GLSLstd450NMin:
            result = std::fmin(x[0], x[1]);
            break;
        case GLSLstd450NMax:
            result = std::fmax(x[0], x[1]);
            break;
        case GLSLstd450NClamp:
            result = std::fmin(std::fmax(x[0], x[1]), x[2]);
            break;
        case GLSLstd450Sqrt:
            if (x[0] < 0) {
                return kNoValue;
            }
            result = std::sqrt(x[0]);
            break;
        case GLSLstd450Sin:
            result = std::sin(x[0]);
            break;
        case GLSLstd450Cos:
            result = std::cos(x[0]);
            break;
        case GLSLstd450Tan:
            result = std::tan(x[0]);
            break;
        case GLSLstd450Exp:
            result = std::exp(x[0]);
            break;
        case GLSLstd450Exp2:
            result = std::exp2(x[0]);
            break;
        case GLSLstd450Log:
        case GLSLstd450Log2:
            if (x[0] <= 0) {
                return kNoValue;
            }
            result = number == GLSLstd450Log ? std::log(x[0]) : std::log2(x[0]);
            break;
        case GLSLstd450Pow:
            if (x[0] <= 0) {
                return kNoValue;
            }
            result = std::pow(x[0], x[1]);
            break;
        default:
            return kNoValue;
        }
        parts[i] = floatConstant(result);
    }
    return count == 1 ? parts[0] : composite(wanted, std::span(parts).first(count));
}

} // namespace msl::ir
