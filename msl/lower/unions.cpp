// Unions. A union's value is the 32-bit words that its members share, and a member of one in a
// variable is an address among them, as a place in a buffer of words is.
#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

bool Lowerer::isUnion(const Type* type) { return type->isStruct() && type->structure->isUnion; }

// Goes on among the words of the union that the place leads to.
void Lowerer::enterUnion(Place& place) {
    Place inside;
    inside.root = Place::Root::shared;
    inside.type = inside.rootType = place.type;
    inside.whole = std::make_shared<const Place>(std::move(place));
    place = std::move(inside);
}

// The integers that a union's bytes are moved by: as large as its alignment lets them be.
const Type* Lowerer::unionChunk(const Type* type) {
    return type->alignment >= 4   ? uintType()
           : type->alignment == 2 ? scalarType(TypeKind::ushortType)
                                  : scalarType(TypeKind::ucharType);
}

Lowerer::Value Lowerer::loadUnion(const Place& place, const Type* type) {
    const Type* chunk = unionChunk(type);
    std::vector<Value> words((type->size + 3) / 4, builder_.intConstant(0));
    for (uint32_t at = 0; at < type->size; at += chunk->size) {
        const Value part = builder_.binary(Op::shiftLeft, ir::kInt, loadScalar(place, chunk, at),
                                           builder_.intConstant(at % 4 * 8));
        words[at / 4] = builder_.binary(Op::bitOr, ir::kInt, words[at / 4], part);
    }
    return builder_.construct(irType(type), words);
}

void Lowerer::storeUnion(const Place& place, const Type* type, Value stored) {
    const Type* chunk = unionChunk(type);
    for (uint32_t at = 0; at < type->size; at += chunk->size) {
        const Value part =
            builder_.binary(Op::shiftRightLogical, ir::kInt, builder_.extract(stored, at / 4),
                            builder_.intConstant(at % 4 * 8));
        storeScalar(place, chunk, at, part);
    }
}

// The value of a union one of whose members has been given.
Lowerer::Value Lowerer::unionOf(const Type* type, uint32_t field, Value held) {
    const uint32_t variable = newVariable(ir::kNoValue);
    setVariable(variable, builder_.zero(irType(type)));
    Place place;
    place.root = Place::Root::ssa;
    place.base = variable;
    place.rootType = place.type = type;
    addStep(place, {false, field}, type->structure->fields[field].type);
    store(place, held);
    return module_.resolve(current_[variable]);
}

// Whether the word of the number `index` is the one meant.
Lowerer::Value Lowerer::isWord(Value wanted, uint32_t index) {
    return builder_.binary(Op::iEqual, ir::kBool, wanted, builder_.intConstant(index));
}

Lowerer::Value Lowerer::sharedWord(const Place& place, uint32_t offset) {
    const Value whole = load(*place.whole);
    const Value wanted = wordIndex(place, offset);
    const uint32_t count = place.whole->type->leaves;
    if (const auto known = builder_.scalarBits(wanted)) {
        return *known < count ? builder_.extract(whole, static_cast<uint32_t>(*known))
                              : builder_.intConstant(0);
    }
    Value word = builder_.extract(whole, 0);
    for (uint32_t i = 1; i < count; ++i) {
        word = builder_.select(ir::kInt, isWord(wanted, i), builder_.extract(whole, i), word);
    }
    return word;
}

void Lowerer::setSharedWord(const Place& place, uint32_t offset, Value word) {
    Value whole = load(*place.whole);
    const Value wanted = wordIndex(place, offset);
    const auto known = builder_.scalarBits(wanted);
    const uint32_t count = place.whole->type->leaves;
    for (uint32_t i = 0; i < count; ++i) {
        if (known && *known != i) {
            continue;
        }
        const Value changed =
            known ? word
                  : builder_.select(ir::kInt, isWord(wanted, i), word, builder_.extract(whole, i));
        whole = builder_.insert(whole, changed, i);
    }
    store(*place.whole, whole);
}

} // namespace msl
