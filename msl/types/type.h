// The types of the language. Types are compared by address: built-in ones are static, derived ones
// are made once per compilation by a TypeTable.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "msl/lexer/name.h"
#include "msl/msl.h"
#include "msl/source/arena.h"

namespace msl {

enum class TypeKind : uint8_t {
    voidType,
    boolType,
    charType,
    ucharType,
    shortType,
    ushortType,
    intType,
    uintType,
    longType,
    ulongType,
    halfType,
    floatType, // scalars stand first, in the order of conversion rank
    vector,
    matrix,
    array,
    structure,
    enumeration,
    pointer,
    reference,
    texture,
    sampler,
    atomic,
};

enum class AddressSpace : uint8_t { none, thread, constant, device, threadgroup };

enum class TextureAccess : uint8_t { sample, read, write, readWrite };

struct StructInfo;
struct EnumInfo;

struct Type {
    TypeKind kind = TypeKind::voidType;
    uint8_t count = 1;   // components of a vector, columns of a matrix
    bool packed = false; // a packed_ vector
    bool depth = false;  // a depth texture
    bool constPointee = false;
    AddressSpace space = AddressSpace::none; // of what a pointer or reference names
    TextureShape shape = TextureShape::texture2d;
    TextureAccess access = TextureAccess::sample;
    uint32_t size = 0; // as sizeof gives it
    uint32_t alignment = 1;
    uint32_t length = 0;           // of an array; 0 for one without bound
    uint32_t leaves = 1;           // scalars and vectors in a value
    const Type* element = nullptr; // of a vector, matrix (a column), array, pointer, enum, texture
    StructInfo* structure = nullptr;
    EnumInfo* enumeration = nullptr;

    bool isVoid() const { return kind == TypeKind::voidType; }
    bool isBool() const { return kind == TypeKind::boolType; }
    bool isScalar() const { return kind >= TypeKind::boolType && kind <= TypeKind::floatType; }
    bool isFloating() const { return kind == TypeKind::halfType || kind == TypeKind::floatType; }
    bool isInteger() const { return kind >= TypeKind::boolType && kind <= TypeKind::ulongType; }
    bool isVector() const { return kind == TypeKind::vector; }
    bool isMatrix() const { return kind == TypeKind::matrix; }
    bool isArray() const { return kind == TypeKind::array; }
    bool isStruct() const { return kind == TypeKind::structure; }
    bool isEnum() const { return kind == TypeKind::enumeration; }
    bool isPointer() const { return kind == TypeKind::pointer; }
    bool isReference() const { return kind == TypeKind::reference; }
    bool isTexture() const { return kind == TypeKind::texture; }
    bool isSampler() const { return kind == TypeKind::sampler; }
    bool isAtomic() const { return kind == TypeKind::atomic; }
    bool isResource() const { return isTexture() || isSampler(); }
    // A texture, sampler or pointer, or what holds one: such values exist only while compiling.
    bool holdsResources() const;
    bool isArithmetic() const { return isScalar() || isVector(); }
    bool isSigned() const;
    // The component of a scalar or vector (itself for a scalar), of a matrix's columns.
    const Type* scalar() const;
    uint32_t components() const { return isVector() ? count : 1; }
};

struct Field {
    Name name = nullptr;
    const Type* type = nullptr;
    uint32_t offset = 0;
    bool isReference = false; // the type is the pointer that stands for the reference
    bool isBase = false;      // the part that is a base struct, under the base's name
};

struct StructInfo {
    Name name = nullptr;
    std::span<Field> fields{};
    const void* declaration = nullptr; // the analysis's record of it
    bool complete = false;
    bool isUnion = false;
    bool hasArray = false;     // somewhere inside
    bool hasResources = false; // textures, samplers or pointers, somewhere inside
};

struct EnumInfo {
    Name name = nullptr;
    bool scoped = false;
};

// Rows of the table of built-in types; scalars are indexed by TypeKind.
const Type* scalarType(TypeKind kind);
const Type* vectorType(TypeKind component, uint32_t count, bool packed = false); // count 1: scalar
const Type* matrixType(TypeKind component, uint32_t columns, uint32_t rows);
const Type* samplerType();
const Type* atomicType(bool isSigned);
inline const Type* voidType() { return scalarType(TypeKind::voidType); }
inline const Type* boolType() { return scalarType(TypeKind::boolType); }
inline const Type* intType() { return scalarType(TypeKind::intType); }
inline const Type* uintType() { return scalarType(TypeKind::uintType); }
inline const Type* floatType() { return scalarType(TypeKind::floatType); }
// The vector without packing; any other type itself.
const Type* unpacked(const Type* type);

// The built-in type of a name ("float", "uint3", "packed_float3", "half2x4", "vector_float2",
// "size_t"), or nothing.
const Type* findBuiltinType(std::string_view name);

// How messages name a type.
std::string toText(const Type* type);

class TypeTable {
  public:
    explicit TypeTable(Arena& arena) : arena_(arena) {}

    const Type* array(const Type* element, uint32_t length);
    const Type* pointer(const Type* pointee, AddressSpace space, bool isConst);
    const Type* reference(const Type* referee, AddressSpace space, bool isConst);
    const Type* texture(TextureShape shape, bool depth, const Type* component,
                        TextureAccess access);
    // Each call makes a new type; its size is set when its fields are known.
    Type* makeStruct(Name name);
    Type* makeEnum(Name name, const Type* underlying, bool scoped);
    // Lays the fields out as Metal does and completes the type.
    void completeStruct(Type* type, const std::vector<Field>& fields);

  private:
    const Type* intern(const Type& type);

    Arena& arena_;
    std::vector<const Type*> derived_;
};

} // namespace msl
