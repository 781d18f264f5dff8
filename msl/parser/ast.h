// The syntax tree. It says what was written and nothing of what it means; names and types in it are
// unresolved, so that a template's tree can be analysed once per instance. Nodes live in the arena.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "msl/lexer/token.h"
#include "msl/types/type.h"

namespace msl::ast {

struct Expr;
struct Stmt;
struct Decl;
struct TypeSyntax;

struct TemplateArgument {
    TypeSyntax* type = nullptr; // one of the two
    Expr* value = nullptr;
    bool expands = false; // a pattern that stands for each element of a pack
};

struct QualifiedName {
    Range range;
    QualifiedName* owner = nullptr; // A<T>:: before everything else
    std::span<Name> spaces{};       // a::b:: before the name
    Name name = nullptr;
    bool hasArguments = false;
    std::span<TemplateArgument> arguments{};
    TypeSyntax* conversion = nullptr; // of "operator T": the type
};

enum class TypeSyntaxKind : uint8_t {
    builtin,
    named,
    declared,
    pointer,
    reference,
    array,
    automatic,
    typeOf
};

struct TypeSyntax {
    TypeSyntaxKind kind = TypeSyntaxKind::builtin;
    bool isConst = false;
    AddressSpace space = AddressSpace::none; // as written before or after the type
    Range range;
    const Type* builtin = nullptr;
    QualifiedName* name = nullptr;
    Decl* declared = nullptr; // a struct or enum defined in place
    TypeSyntax* element = nullptr;
    Expr* length = nullptr; // of an array; nothing where it follows from the initialiser
    Expr* operand = nullptr;
};

enum class ExprKind : uint8_t {
    intLiteral,
    floatLiteral,
    boolLiteral,
    nullLiteral,
    name,
    call,
    construct,
    cast,
    bitCast,
    unary,
    postfix,
    binary,
    logical,
    assign,
    conditional,
    comma,
    member,
    index,
    list,
    sizeOf,
    alignOf,
    thisObject,
    packExpansion, // a...
    packElement,   // a, with its packs standing for their element of the number intValue
    sizeOfPack,    // sizeof...(name)
};

struct Expr {
    ExprKind kind = ExprKind::intLiteral;
    TokenKind op = TokenKind::unknown;
    bool braces = false;  // construct: T{...}
    bool grouped = false; // in parentheses of its own
    uint16_t depth = 1;   // of the tree below
    const Type* literalType = nullptr;
    Range range;
    Expr* a = nullptr;
    Expr* b = nullptr;
    Expr* c = nullptr;
    std::span<Expr*> items{};      // arguments, elements of a list
    std::span<Name> designators{}; // of a list: .name of each element, or null
    TypeSyntax* type = nullptr;
    QualifiedName* name = nullptr;
    uint64_t intValue = 0;
    double floatValue = 0;
};

struct Attribute {
    Range range;
    Name name = nullptr;
    Expr* argument = nullptr;
    Name word = nullptr;       // the argument where it is a single name
    std::string_view string{}; // the argument where it is a string, without its quotes
    // The argument's value, which semantic analysis fills in where the attribute takes a number.
    bool hasNumber = false;
    uint32_t number = 0;
};

enum class InitKind : uint8_t { none, equal, paren, brace };

struct Variable {
    Range range; // of the name
    Name name = nullptr;
    TypeSyntax* type = nullptr;
    Expr* init = nullptr; // for `paren` and `brace` a list
    InitKind initKind = InitKind::none;
    bool isConstexpr = false;
    bool isStatic = false;
    bool isPack = false; // a parameter that stands for any number of them
    std::span<Attribute> attributes{};
};

struct TemplateParameter {
    Range range;
    Name name = nullptr;
    bool isPack = false;
    TypeSyntax* valueType = nullptr; // nothing for a type parameter
    TypeSyntax* defaultType = nullptr;
    Expr* defaultValue = nullptr;
};

enum class FunctionStage : uint8_t { none, vertex, fragment, kernel };

struct Function {
    Range range; // of the name
    Name name = nullptr;
    QualifiedName* qualifiedName = nullptr; // where it is defined outside its struct or namespace
    TypeSyntax* result = nullptr;
    std::span<Variable*> parameters{};
    std::span<Attribute> attributes{};
    std::span<TemplateParameter> templateParameters{};
    bool isTemplate = false;
    bool isConst = false;
    bool isStatic = false;
    bool isConstructor = false;
    bool isExplicit = false;
    bool isDefaulted = false;
    bool trailingResult = false;                 // the result's type may name the parameters
    AddressSpace selfSpace = AddressSpace::none; // of the object, as written behind the parameters
    FunctionStage stage = FunctionStage::none;
    Stmt* body = nullptr;
    std::span<Variable*> memberInits{}; // of a constructor: name and list
};

struct Enumerator {
    Range range;
    Name name = nullptr;
    Expr* value = nullptr;
};

enum class DeclKind : uint8_t {
    variables,
    function,
    structure,
    enumeration,
    alias,
    space,
    usingSpace,
    usingName,
    staticAssert,
    instantiation // of a function template, or of a struct template that `type` names
};

struct Decl {
    DeclKind kind = DeclKind::variables;
    Range range;
    Name name = nullptr;
    std::span<Variable*> variables{};
    Function* function = nullptr;
    std::span<Decl*> members{};     // of a struct or namespace
    std::span<TypeSyntax*> bases{}; // of a struct
    std::span<Enumerator> enumerators{};
    TypeSyntax* type = nullptr;      // aliased type, underlying type
    Decl* typeDeclaration = nullptr; // a struct or enum that the declaration defines on the way
    QualifiedName* target = nullptr;
    Expr* condition = nullptr;
    std::span<TemplateParameter> templateParameters{};
    bool scoped = false;
    bool isTemplate = false;
    bool isDefinition = false; // a struct with its members
    bool isUnion = false;
    bool isInline = false;      // a namespace whose names are names of the one around it
    bool isSpecialised = false; // a struct template's explicit or partial specialisation
    std::span<TemplateArgument> arguments{}; // that it is specialised for
};

enum class StmtKind : uint8_t {
    empty,
    expression,
    declaration,
    compound,
    ifElse,
    forLoop,
    whileLoop,
    doLoop,
    switchCase,
    caseLabel,
    defaultLabel,
    breakLoop,
    continueLoop,
    returnValue,
    rangeFor
};

struct Stmt {
    StmtKind kind = StmtKind::empty;
    Range range;
    Expr* expr = nullptr; // condition, value, expression
    Expr* step = nullptr;
    Stmt* init = nullptr;
    Stmt* body = nullptr;
    Stmt* otherwise = nullptr;
    Decl* decl = nullptr;
    std::span<Stmt*> items{};
};

} // namespace msl::ast
