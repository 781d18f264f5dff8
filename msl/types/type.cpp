#include "msl/types/type.h"

#include <algorithm>
#include <array>

namespace msl {
namespace {

constexpr size_t kScalarCount = static_cast<size_t>(TypeKind::floatType) + 1;
constexpr size_t kVectorBase = kScalarCount;
constexpr size_t kVectorRow = 6; // 2 to 4 components, then the same packed
constexpr size_t kMatrixBase = kVectorBase + kScalarCount * kVectorRow;
constexpr size_t kMatrixRow = 9;
constexpr size_t kSampler = kMatrixBase + 2 * kMatrixRow;
constexpr size_t kAtomicInt = kSampler + 1;
constexpr size_t kAtomicUint = kAtomicInt + 1;
constexpr size_t kBuiltinCount = kAtomicUint + 1;

struct BuiltinTypes {
    Type types[kBuiltinCount];
};
extern const BuiltinTypes kBuiltins;

constexpr uint8_t kScalarSizes[kScalarCount] = {0, 1, 1, 1, 2, 2, 4, 4, 8, 8, 2, 4};

constexpr size_t vectorIndex(size_t scalar, size_t count, bool packed) {
    return kVectorBase + scalar * kVectorRow + (packed ? 3 : 0) + count - 2;
}

constexpr BuiltinTypes makeBuiltins() {
    BuiltinTypes result{};
    for (size_t i = 0; i < kScalarCount; ++i) {
        Type& scalar = result.types[i];
        scalar.kind = static_cast<TypeKind>(i);
        scalar.size = kScalarSizes[i];
        scalar.alignment = kScalarSizes[i] == 0 ? 1 : kScalarSizes[i];
        for (size_t count = 2; count <= 4; ++count) {
            for (const bool packed : {false, true}) {
                Type& vector = result.types[vectorIndex(i, count, packed)];
                vector.kind = TypeKind::vector;
                vector.count = static_cast<uint8_t>(count);
                vector.packed = packed;
                vector.element = &kBuiltins.types[i];
                const size_t slots = packed ? count : (count == 3 ? 4 : count);
                vector.size = static_cast<uint32_t>(slots * kScalarSizes[i]);
                vector.alignment = packed ? scalar.alignment : std::max(vector.size, 1U);
            }
        }
    }
    for (size_t half = 0; half < 2; ++half) {
        const auto scalar =
            static_cast<size_t>(half == 0 ? TypeKind::floatType : TypeKind::halfType);
        for (size_t columns = 2; columns <= 4; ++columns) {
            for (size_t rows = 2; rows <= 4; ++rows) {
                Type& matrix =
                    result.types[kMatrixBase + half * kMatrixRow + (columns - 2) * 3 + rows - 2];
                const Type& column = result.types[vectorIndex(scalar, rows, false)];
                matrix.kind = TypeKind::matrix;
                matrix.count = static_cast<uint8_t>(columns);
                matrix.element = &kBuiltins.types[vectorIndex(scalar, rows, false)];
                matrix.size = static_cast<uint32_t>(columns * column.size);
                matrix.alignment = column.alignment;
            }
        }
    }
    result.types[kSampler].kind = TypeKind::sampler;
    result.types[kSampler].size = 8;
    result.types[kSampler].alignment = 8;
    for (const bool isSigned : {true, false}) {
        Type& atomic = result.types[isSigned ? kAtomicInt : kAtomicUint];
        atomic.kind = TypeKind::atomic;
        atomic.element =
            &kBuiltins
                 .types[static_cast<size_t>(isSigned ? TypeKind::intType : TypeKind::uintType)];
        atomic.size = atomic.alignment = 4;
    }
    return result;
}

constexpr BuiltinTypes kBuiltins = makeBuiltins();

struct ScalarName {
    std::string_view name;
    TypeKind kind;
};

constexpr ScalarName kScalarNames[] = {
    {"bool", TypeKind::boolType},     {"char", TypeKind::charType},
    {"uchar", TypeKind::ucharType},   {"short", TypeKind::shortType},
    {"ushort", TypeKind::ushortType}, {"int", TypeKind::intType},
    {"uint", TypeKind::uintType},     {"long", TypeKind::longType},
    {"ulong", TypeKind::ulongType},   {"half", TypeKind::halfType},
    {"float", TypeKind::floatType},   {"void", TypeKind::voidType},
    {"int8_t", TypeKind::charType},   {"uint8_t", TypeKind::ucharType},
    {"int16_t", TypeKind::shortType}, {"uint16_t", TypeKind::ushortType},
    {"int32_t", TypeKind::intType},   {"uint32_t", TypeKind::uintType},
    {"int64_t", TypeKind::longType},  {"uint64_t", TypeKind::ulongType},
    {"size_t", TypeKind::ulongType},  {"ptrdiff_t", TypeKind::longType},
};

constexpr std::string_view kPlainNames[kScalarCount] = {"void",  "bool",   "char", "uchar",
                                                        "short", "ushort", "int",  "uint",
                                                        "long",  "ulong",  "half", "float"};

} // namespace

bool Type::isSigned() const {
    return kind == TypeKind::charType || kind == TypeKind::shortType || kind == TypeKind::intType ||
           kind == TypeKind::longType;
}

bool Type::holdsResources() const {
    switch (kind) {
    case TypeKind::texture:
    case TypeKind::sampler:
    case TypeKind::pointer:
        return true;
    case TypeKind::array:
        return element->holdsResources();
    case TypeKind::structure:
        return structure->hasResources;
    default:
        return false;
    }
}

const Type* Type::scalar() const {
    if (isVector() || isEnum() || isAtomic()) {
        return element;
    }
    return isMatrix() ? element->element : this;
}

const Type* scalarType(TypeKind kind) { return &kBuiltins.types[static_cast<size_t>(kind)]; }

const Type* vectorType(TypeKind component, uint32_t count, bool packed) {
    if (count == 1) {
        return scalarType(component);
    }
    return &kBuiltins.types[vectorIndex(static_cast<size_t>(component), count, packed)];
}

const Type* matrixType(TypeKind component, uint32_t columns, uint32_t rows) {
    const size_t half = component == TypeKind::halfType ? 1 : 0;
    return &kBuiltins.types[kMatrixBase + half * kMatrixRow + (columns - 2) * 3 + rows - 2];
}

const Type* samplerType() { return &kBuiltins.types[kSampler]; }

const Type* atomicType(bool isSigned) {
    return &kBuiltins.types[isSigned ? kAtomicInt : kAtomicUint];
}

const Type* unpacked(const Type* type) {
    return type->isVector() && type->packed ? vectorType(type->element->kind, type->count) : type;
}

const Type* findBuiltinType(std::string_view name) {
    if (name == "sampler") {
        return samplerType();
    }
    if (name == "atomic_int" || name == "atomic_uint") {
        return atomicType(name == "atomic_int");
    }
    bool packed = false;
    bool matrixOnly = false;
    bool vectorOnly = false;
    if (name.starts_with("packed_")) {
        packed = true;
        name.remove_prefix(7);
    } else if (name.starts_with("vector_")) {
        vectorOnly = true;
        name.remove_prefix(7);
    } else if (name.starts_with("matrix_")) {
        matrixOnly = true;
        name.remove_prefix(7);
    } else if (name.starts_with("simd_")) {
        name.remove_prefix(5);
    }
    for (const auto& scalar : kScalarNames) {
        if (!name.starts_with(scalar.name)) {
            continue;
        }
        const auto rest = name.substr(scalar.name.size());
        if (rest.empty()) {
            return packed || matrixOnly || vectorOnly ? nullptr : scalarType(scalar.kind);
        }
        const auto digit = [&](size_t i) -> uint32_t {
            return rest[i] >= '2' && rest[i] <= '4' ? static_cast<uint32_t>(rest[i] - '0') : 0;
        };
        if (scalar.kind == TypeKind::voidType || scalar.name.ends_with("_t")) {
            continue;
        }
        if (rest.size() == 1 && digit(0) != 0 && !matrixOnly) {
            return vectorType(scalar.kind, digit(0), packed);
        }
        if (rest.size() == 3 && rest[1] == 'x' && digit(0) != 0 && digit(2) != 0 && !packed &&
            !vectorOnly && scalarType(scalar.kind)->isFloating()) {
            return matrixType(scalar.kind, digit(0), digit(2));
        }
    }
    return nullptr;
}

std::string toText(const Type* type) {
    static constexpr std::array<std::string_view, 5> kSpaces{"", "thread ", "constant ", "device ",
                                                             "threadgroup "};
    switch (type->kind) {
    case TypeKind::vector:
        return (type->packed ? "packed_" : "") + toText(type->element) +
               std::to_string(type->count);
    case TypeKind::matrix:
        return toText(type->scalar()) + std::to_string(type->count) + "x" +
               std::to_string(type->element->count);
    case TypeKind::array:
        return toText(type->element) + "[" +
               (type->length == 0 ? "" : std::to_string(type->length)) + "]";
    case TypeKind::structure:
        return type->structure->name != nullptr ? std::string(type->structure->name->text)
                                                : "an unnamed struct";
    case TypeKind::enumeration:
        return type->enumeration->name != nullptr ? std::string(type->enumeration->name->text)
                                                  : "an unnamed enum";
    case TypeKind::pointer:
    case TypeKind::reference:
        return std::string(kSpaces[static_cast<size_t>(type->space)]) +
               (type->constPointee ? "const " : "") + toText(type->element) +
               (type->isPointer() ? "*" : "&");
    case TypeKind::texture: {
        static constexpr std::array<std::string_view, 10> kShapes{
            "1d",         "2d",       "3d",    "cube",        "2d_array",
            "cube_array", "1d_array", "2d_ms", "2d_ms_array", "_buffer"};
        return (type->depth ? "depth" : "texture") +
               std::string(kShapes[static_cast<size_t>(type->shape)]) + "<" +
               toText(type->element) + ">";
    }
    case TypeKind::sampler:
        return "sampler";
    case TypeKind::atomic:
        return "atomic_" + toText(type->element);
    default:
        return std::string(kPlainNames[static_cast<size_t>(type->kind)]);
    }
}

const Type* TypeTable::intern(const Type& type) {
    for (const auto* known : derived_) {
        if (known->kind == type.kind && known->element == type.element &&
            known->length == type.length && known->space == type.space &&
            known->constPointee == type.constPointee && known->shape == type.shape &&
            known->depth == type.depth && known->access == type.access) {
            return known;
        }
    }
    derived_.push_back(arena_.make<Type>(type));
    return derived_.back();
}

const Type* TypeTable::array(const Type* element, uint32_t length) {
    Type type;
    type.kind = TypeKind::array;
    type.element = element;
    type.length = length;
    type.size = element->size * length;
    type.alignment = element->alignment;
    type.leaves = element->leaves * std::max(length, 1U);
    return intern(type);
}

const Type* TypeTable::pointer(const Type* pointee, AddressSpace space, bool isConst) {
    Type type;
    type.kind = TypeKind::pointer;
    type.element = pointee;
    type.space = space;
    type.constPointee = isConst;
    type.size = type.alignment = 8;
    return intern(type);
}

const Type* TypeTable::reference(const Type* referee, AddressSpace space, bool isConst) {
    Type type;
    type.kind = TypeKind::reference;
    type.element = referee;
    type.space = space;
    type.constPointee = isConst;
    type.size = type.alignment = 8;
    return intern(type);
}

const Type* TypeTable::texture(TextureShape shape, bool depth, const Type* component,
                               TextureAccess access) {
    Type type;
    type.kind = TypeKind::texture;
    type.shape = shape;
    type.depth = depth;
    type.element = component;
    type.access = access;
    type.size = type.alignment = 8;
    return intern(type);
}

Type* TypeTable::makeStruct(Name name) {
    auto* type = arena_.make<Type>();
    type->kind = TypeKind::structure;
    type->structure = arena_.make<StructInfo>();
    type->structure->name = name;
    return type;
}

Type* TypeTable::makeEnum(Name name, const Type* underlying, bool scoped) {
    auto* type = arena_.make<Type>();
    type->kind = TypeKind::enumeration;
    type->element = underlying;
    type->size = underlying->size;
    type->alignment = underlying->alignment;
    type->enumeration = arena_.make<EnumInfo>();
    type->enumeration->name = name;
    type->enumeration->scoped = scoped;
    return type;
}

void TypeTable::completeStruct(Type* type, const std::vector<Field>& fields) {
    auto& info = *type->structure;
    info.fields = arena_.copy(fields);
    uint32_t end = 0;
    type->leaves = 0;
    for (auto& field : info.fields) {
        const uint32_t alignment = field.type->alignment;
        field.offset = info.isUnion ? 0 : (end + alignment - 1) / alignment * alignment;
        // A base without members takes no room.
        const bool empty = field.isBase && field.type->structure->fields.empty();
        end = std::max(end, field.offset + (empty ? 0 : field.type->size));
        type->alignment = std::max(type->alignment, field.type->alignment);
        type->leaves += field.type->leaves;
        info.hasResources = info.hasResources || field.type->holdsResources();
        info.hasArray = info.hasArray || field.type->isArray() ||
                        (field.type->isStruct() && field.type->structure->hasArray);
    }
    type->size = (std::max(end, 1U) + type->alignment - 1) / type->alignment * type->alignment;
    if (info.isUnion) {
        info.hasArray = false; // a union is carried as the words that its members share
        type->leaves = (type->size + 3) / 4;
    }
    info.complete = true;
}

} // namespace msl
