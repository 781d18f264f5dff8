// The typed tree: what semantic analysis makes of the syntax tree. Every name is resolved, every
// conversion explicit, every operand of its final type. Nodes live in the arena.
#pragma once

#include <cstdint>
#include <span>

#include "msl/library/library.h"
#include "msl/parser/ast.h"
#include "msl/types/type.h"

namespace msl::tree {

struct Expr;
struct Stmt;
struct Function;

enum class VariableKind : uint8_t { local, parameter, global };

struct Variable {
    Range range;
    Name name = nullptr;
    const Type* type = nullptr; // of what it holds, or of what it refers to
    VariableKind kind = VariableKind::local;
    bool isReference = false;
    bool isConst = false;
    bool isMoved = false; // a pointer that '++' or '+=' moves
    bool isUsed = false;  // named somewhere behind its declaration
    AddressSpace space = AddressSpace::thread;
    const Expr* init = nullptr;
    const Function* function = nullptr; // that declares it
    std::span<const ast::Attribute> attributes{};
    uint32_t samplerIndex = UINT32_MAX; // of a constexpr sampler: which of the unit
    uint32_t slot = 0; // among the variables of its function; of the unit for a global
};

enum class ExprKind : uint8_t {
    constant, // scalar: bits
    zero,     // every part zero
    variable,
    field,       // a, index
    swizzle,     // a, components
    index,       // a[b]; of a pointer too
    deref,       // *a
    addressOf,   // &a
    unary,       // op: minus, exclamation, tilde
    binary,      // op: operands of one type, or vector, matrix and scalar as `*` takes them
    logical,     // op: && or ||
    conditional, // a ? b : c
    select,      // by component
    assign,      // a = b
    compound,    // a = (type of a)((type of c) a op b), where c only carries its type
    step,        // ++ and --: op; postfix where `after`
    convert,     // arithmetic, by component, or a scalar to every component
    bitCast,
    construct, // a vector or matrix from parts; an array or struct from its elements
    call,
    library,
    comma,
    functionConstant, // index
    pointerStep,      // a, a pointer variable, moved by b elements: op; its old value where `after`
    list,             // braces as an argument, until the parameter gives them a type
};

struct Expr {
    ExprKind kind = ExprKind::constant;
    TokenKind op = TokenKind::unknown;
    bool lvalue = false;
    bool isConst = false; // an lvalue that must not be written
    bool after = false;
    bool simple = false; // cheap and without side effects: may be evaluated needlessly
    uint8_t componentCount = 0;
    uint8_t components[4] = {};
    AddressSpace space = AddressSpace::none; // of an lvalue
    uint16_t cost = 1;
    uint32_t index = 0;
    const Type* type = nullptr;
    Range range;
    Expr* a = nullptr;
    Expr* b = nullptr;
    Expr* c = nullptr;
    std::span<Expr*> items{};
    uint64_t bits = 0; // integers by two's complement, floats as a double's bits
    Variable* variable = nullptr;
    const Function* function = nullptr;
    const LibraryFunction* library = nullptr;
    const ast::Expr* list = nullptr;
};

// The places of the items of a texture's member function. `index` of the call says what `level` and
// the gradients are: 0 nothing, 1 a bias, 2 a level, 3 gradients.
namespace TextureItem {
enum : size_t {
    texture,
    sampler,
    coordinate,
    layer,
    compared, // the value to compare with, or the colour that is written
    level,    // level, bias, or number of the sample
    gradientX,
    gradientY,
    offset,
    lodClamp,
    face // of a cube, where a single texel is meant
};
} // namespace TextureItem
inline constexpr size_t kTextureItems = TextureItem::face + 1;

enum class StmtKind : uint8_t {
    expression,
    declare,
    compound,
    ifElse,
    loop,
    multiway,
    leave,
    breakOut,
    continueLoop
};

struct Case {
    uint64_t value = 0;
    bool isDefault = false;
    uint32_t position = 0; // the statement of the body that it stands before
};

struct Stmt {
    StmtKind kind = StmtKind::compound;
    bool mayReturn = false; // a return stands somewhere inside
    bool alwaysReturns = false;
    bool testLast = false; // a do loop
    Range range;
    Expr* expr = nullptr; // condition, value
    Expr* step = nullptr;
    Stmt* init = nullptr;
    Stmt* body = nullptr;
    Stmt* otherwise = nullptr;
    Variable* variable = nullptr;
    std::span<Stmt*> items{};
    std::span<Case> cases{};
    std::span<Variable*> assigned{}; // of a loop: variables from outside that it may write
};

struct Function {
    Name name = nullptr;
    Range range;
    const Type* result = nullptr;
    std::span<Variable*> parameters{};
    Variable* self = nullptr; // the object of a member function
    Stmt* body = nullptr;
    const ast::Function* syntax = nullptr;
    ast::FunctionStage stage = ast::FunctionStage::none;
    uint32_t requiredParameters = 0;
    bool isConst = false;
    bool constructor = false;
    bool isExplicit = false;
    bool returnsReference = false; // the result is a place of the type `result`
    bool resultConst = false;
    AddressSpace resultSpace = AddressSpace::none;
    AddressSpace selfSpace = AddressSpace::none; // of the object, where the source says it
    bool pending = false;  // a template's instance whose body is analysed when it is first called
    void* space = nullptr; // in which the names of a pending body are looked up
    uint32_t variableCount = 0;
    std::span<Expr*> defaults{}; // of the parameters, or null
    mutable bool active = false; // being expanded
};

// What semantic analysis hands to lowering.
struct Unit {
    std::vector<Function*> entryPoints;
    std::vector<SamplerOptions> samplers;
    std::vector<FunctionConstant> constants;
    uint32_t globalCount = 0;
    bool hasKernels = false;
    bool castsPointers = false; // to another element type, other than a vector's component
};

} // namespace msl::tree
