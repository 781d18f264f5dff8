// Buffers that hold what storage without device features cannot: halves, bools, integers of 8 and
// 16 bits, or resources. Such a buffer is an array of 32-bit words, and a place in it an address.
#include <spirv/unified1/GLSL.std.450.h>

#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

bool Lowerer::needsWords(const Type* type) const {
    const Type* scalar = type->scalar();
    if (scalar->isScalar()) {
        return scalar->size < 4;
    }
    if (type->isArray()) {
        return needsWords(type->element);
    }
    if (isUnion(type)) {
        return true;
    }
    if (type->isStruct()) {
        for (const auto& field : type->structure->fields) {
            if (needsWords(field.type)) {
                return true;
            }
        }
    }
    return type->holdsResources();
}

// The index of the word that the byte `offset` behind the place lies in.
Lowerer::Value Lowerer::wordIndex(const Place& place, uint32_t offset) {
    const uint32_t bytes = place.offset + offset;
    if (place.address == ir::kNoValue) {
        return builder_.intConstant(bytes / 4);
    }
    const Value address =
        builder_.binary(Op::iAdd, ir::kInt, place.address, builder_.intConstant(bytes));
    return builder_.binary(Op::shiftRightLogical, ir::kInt, address, builder_.intConstant(2));
}

Lowerer::Value Lowerer::wordPointer(const Place& place, uint32_t offset) {
    const auto storage = module_.typeOf(place.base).storage;
    return builder_.emit(Op::accessChain, builder_.pointer(ir::kInt, storage),
                         {place.base, builder_.intConstant(0), wordIndex(place, offset)});
}

Lowerer::Value Lowerer::wordAt(const Place& place, uint32_t offset) {
    if (place.root == Place::Root::shared) {
        return sharedWord(place, offset);
    }
    if (!place.constantSpace || place.address != ir::kNoValue) {
        return builder_.emit(Op::load, ir::kInt, {wordPointer(place, offset)});
    }
    // What never changes is read once, at the start of the function.
    const std::vector<uint32_t> path{(place.offset + offset) / 4};
    for (const auto& known : hoisted_) {
        if (known.base == place.base && known.path == path) {
            return known.loaded;
        }
    }
    const ir::BlockId here = builder_.current();
    builder_.setCurrent(prologue_);
    const Value loaded = builder_.emit(Op::load, ir::kInt, {wordPointer(place, offset)});
    builder_.setCurrent(here);
    hoisted_.push_back({place.base, path, loaded});
    return loaded;
}

// How far a value of `size` bytes is shifted within its word.
Lowerer::Value Lowerer::bitOffset(const Place& place, uint32_t offset, uint32_t size) {
    const uint32_t bytes = place.offset + offset;
    const uint32_t mask = 4 - size;
    if (place.address == ir::kNoValue) {
        return builder_.intConstant((bytes & mask) * 8);
    }
    const Value address =
        builder_.binary(Op::iAdd, ir::kInt, place.address, builder_.intConstant(bytes));
    const Value within = builder_.binary(Op::bitAnd, ir::kInt, address, builder_.intConstant(mask));
    return builder_.binary(Op::shiftLeft, ir::kInt, within, builder_.intConstant(3));
}

Lowerer::Value Lowerer::loadScalar(const Place& place, const Type* type, uint32_t offset) {
    if (type->isEnum()) {
        type = type->element;
    }
    const ir::TypeId wanted = irType(type);
    const Value word = wordAt(place, offset);
    if (type->size == 8) {
        const auto widened = [&](Value half) {
            return builder_.unary(Op::unsignedWiden, ir::kLong, half);
        };
        const Value high =
            builder_.binary(Op::shiftLeft, ir::kLong, widened(wordAt(place, offset + 4)),
                            builder_.constant(ir::kLong, 32));
        return builder_.binary(Op::bitOr, ir::kLong, widened(word), high);
    }
    if (type->size == 4) {
        return builder_.unary(Op::bitcast, wanted, word);
    }
    const Value shifted = builder_.binary(Op::shiftRightLogical, ir::kInt, word,
                                          bitOffset(place, offset, type->size));
    if (type->isFloating()) {
        const Value both =
            builder_.extended(GLSLstd450UnpackHalf2x16, ir::vectorOf(ir::kFloat, 2), {shifted});
        return builder_.extract(both, 0);
    }
    if (type->isBool()) {
        const Value byte =
            builder_.binary(Op::bitAnd, ir::kInt, shifted, builder_.intConstant(0xFF));
        return builder_.binary(Op::iNotEqual, ir::kBool, byte, builder_.intConstant(0));
    }
    return wrapSmall(shifted, type);
}

Lowerer::Value Lowerer::loadWords(const Place& place, const Type* type) {
    if (!spend({})) {
        return builder_.undefined(irType(type));
    }
    if (type->isScalar() || type->isEnum()) {
        return loadScalar(place, type, 0);
    }
    if (isUnion(type)) {
        return loadUnion(place, type);
    }
    std::vector<Value> parts;
    const uint32_t count = type->isStruct()  ? static_cast<uint32_t>(type->structure->fields.size())
                           : type->isArray() ? type->length
                                             : type->count;
    for (uint32_t i = 0; i < count; ++i) {
        if (type->isVector()) {
            parts.push_back(loadScalar(place, type->element, i * type->element->size));
            continue;
        }
        Place part = place;
        addStep(part, {false, i},
                type->isStruct() ? type->structure->fields[i].type : type->element);
        parts.push_back(loadWords(part, part.type));
    }
    return builder_.construct(irType(type), parts);
}

void Lowerer::putWord(const Place& place, uint32_t offset, Value word) {
    if (place.root == Place::Root::shared) {
        setSharedWord(place, offset, word);
        return;
    }
    builder_.emit(Op::store, ir::kVoid, {wordPointer(place, offset), word});
}

void Lowerer::storeScalar(const Place& place, const Type* type, uint32_t offset, Value stored) {
    if (type->isEnum()) {
        type = type->element;
    }
    if (type->size == 8) {
        putWord(place, offset, builder_.unary(Op::unsignedWiden, ir::kInt, stored));
        putWord(place, offset + 4,
                builder_.unary(Op::unsignedWiden, ir::kInt,
                               builder_.binary(Op::shiftRightLogical, ir::kLong, stored,
                                               builder_.constant(ir::kLong, 32))));
        return;
    }
    if (type->size == 4) {
        putWord(place, offset, builder_.unary(Op::bitcast, ir::kInt, stored));
        return;
    }
    const uint32_t ones = type->size == 2 ? 0xFFFF : 0xFF;
    Value bits = stored;
    if (type->isFloating()) {
        const Value pair[] = {stored, builder_.floatConstant(0.0F)};
        bits = builder_.extended(GLSLstd450PackHalf2x16, ir::kInt,
                                 {builder_.construct(ir::vectorOf(ir::kFloat, 2), pair)});
    } else if (type->isBool()) {
        bits = builder_.select(ir::kInt, stored, builder_.intConstant(1), builder_.intConstant(0));
    }
    // Neighbours in the word may be written by others at the same time, so the word changes in
    // atomic steps that leave their bits alone.
    const Value shift = bitOffset(place, offset, type->size);
    const Value mask = builder_.binary(Op::shiftLeft, ir::kInt, builder_.intConstant(ones), shift);
    const Value placed = builder_.binary(
        Op::shiftLeft, ir::kInt,
        builder_.binary(Op::bitAnd, ir::kInt, bits, builder_.intConstant(ones)), shift);
    if (place.root == Place::Root::shared) {
        const Value rest = builder_.binary(Op::bitAnd, ir::kInt, sharedWord(place, offset),
                                           builder_.unary(Op::bitNot, ir::kInt, mask));
        setSharedWord(place, offset, builder_.binary(Op::bitOr, ir::kInt, rest, placed));
        return;
    }
    const Value pointer = wordPointer(place, offset);
    atomicOperation(Op::atomicAnd, ir::kInt, pointer, builder_.unary(Op::bitNot, ir::kInt, mask));
    atomicOperation(Op::atomicOr, ir::kInt, pointer, placed);
}

void Lowerer::storeWords(const Place& place, const Type* type, Value stored) {
    if (!spend({})) {
        return;
    }
    if (type->isScalar() || type->isEnum()) {
        storeScalar(place, type, 0, stored);
        return;
    }
    if (isUnion(type)) {
        storeUnion(place, type, stored);
        return;
    }
    const uint32_t count = type->isStruct()  ? static_cast<uint32_t>(type->structure->fields.size())
                           : type->isArray() ? type->length
                                             : type->count;
    for (uint32_t i = 0; i < count; ++i) {
        const Value part = builder_.extract(stored, i);
        if (type->isVector()) {
            storeScalar(place, type->element, i * type->element->size, part);
            continue;
        }
        Place at = place;
        addStep(at, {false, i}, type->isStruct() ? type->structure->fields[i].type : type->element);
        storeWords(at, at.type, part);
    }
}

} // namespace msl
