// Instructions, simplified as they are made.
#include <algorithm>
#include <array>

#include "msl/ir/builder.h"

namespace msl::ir {

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
    const Value value = append({.op = Op::phi, .type = wanted}, {});
    module_.instructions[value].operandCount = static_cast<uint16_t>(operandRoom);
    module_.operands.resize(module_.operands.size() + operandRoom, 0);
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

} // namespace msl::ir
