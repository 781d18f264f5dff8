// Semantic analysis: names, types, conversions, overloads, templates and constants. Makes the typed
// tree from the syntax tree and reports everything that the language forbids.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "msl/parser/ast.h"
#include "msl/sema/tree.h"
#include "msl/source/source.h"

namespace msl {

struct Space;

struct Template;

enum class SymbolKind : uint8_t {
    variable,
    functions,
    type,
    enumerator,
    space,
    value,
    pattern // a template of a struct, an alias or a variable
};

struct Overload {
    tree::Function* function = nullptr;     // nothing for a template
    const ast::Function* pattern = nullptr; // of a template
    Space* space = nullptr;                 // where a template stands
    const Type* self = nullptr;             // the struct that a template is a member of
};

// What a template's parameter stands for.
struct TemplateBinding {
    const Type* type = nullptr;
    std::optional<uint64_t> value;
    bool isPack = false;
    std::vector<TemplateBinding> pack{}; // its elements
    bool known() const { return type != nullptr || value || isPack; }
    bool operator==(const TemplateBinding&) const = default;
};

// One meaning of a name. The meanings of a name are chained from the innermost outwards.
struct Symbol {
    SymbolKind kind = SymbolKind::variable;
    Name name = nullptr;
    Symbol* outer = nullptr;
    Space* space = nullptr;      // the namespace it belongs to; nothing for a local one
    const void* owner = nullptr; // the function whose local it is
    Range range;
    tree::Variable* variable = nullptr;
    const Type* type = nullptr;
    Space* target = nullptr;
    uint64_t value = 0;     // of an enumerator
    uint32_t overloads = 0; // index into Sema's overload sets
    Template* pattern = nullptr;
    bool isPack = false;
    std::span<Symbol*> pack{}; // its elements
};

struct Space {
    Name name = nullptr;
    Space* parent = nullptr;
    const Type* self = nullptr; // the struct whose members it holds
    // Whose names are names here too: of the struct's bases, and inline namespaces.
    std::span<Space*> bases{};
};

// How well an argument fits a parameter, best first.
enum class Rank : uint8_t { exact, promotion, conversion, splat, vectorConversion, user, none };

class Sema {
  public:
    Sema(NameTable& names, Arena& arena, TypeTable& types, Diagnostics& diagnostics);

    // The unit's entry points. Valid only where no error was reported.
    tree::Unit run(const std::vector<ast::Decl*>& declarations);

  private:
    struct Member {
        Name name = nullptr;
        uint32_t overloads = 0;
    };
    struct Default {
        uint32_t field = 0;
        const ast::Expr* init = nullptr;
    };
    struct StructRecord {
        std::vector<Member> methods;
        std::vector<Default> defaults;
        Space* space = nullptr;      // of its static members
        Name constructors = nullptr; // under which name they stand among the methods
        Template* pattern = nullptr; // of an instance of a template
        std::vector<TemplateBinding> arguments{};
    };
    using Parameters = std::span<const ast::TemplateParameter>;
    using Bindings = std::vector<TemplateBinding>;
    struct Instance {
        const void* pattern = nullptr;
        Bindings bindings;
        tree::Function* function = nullptr;
        const Type* type = nullptr;
        Symbol* symbol = nullptr;
    };
    struct GivenArgument {
        const ast::TemplateArgument* syntax = nullptr;
        std::optional<size_t> element; // of the packs in it
    };
    struct Loop {
        std::vector<tree::Variable*> assigned;
        size_t scopeMark = 0;
        bool isSwitch = false;
    };
    struct FunctionState {
        tree::Function* function = nullptr;
        const Type* result = nullptr;
        StructRecord* record = nullptr;
        std::vector<Loop> loops;
        uint32_t slots = 0;
        bool deducedResult = false;
        std::vector<const tree::Variable*> locals{}; // as the source declares them
    };
    class DepthGuard;
    class Context;
    class TextureCall;
    class Evaluator;

    // names.cpp
    Symbol* elementOf(Symbol* symbol) const;
    Symbol* lookup(Name name) const;
    Symbol* lookup(const ast::QualifiedName& name);
    Symbol* lookupIn(Name name, const Space* space) const;
    Space* spaceOf(const ast::QualifiedName& name);
    Space* findSpace(Name name) const;
    Symbol* declare(SymbolKind kind, Name name, Range range);
    void closeScope(size_t mark);
    bool sameScope(const Symbol& symbol) const;
    void suggest(std::span<const std::string_view> known, std::string_view unknown, Range range);
    void reportUnknown(const ast::QualifiedName& name, std::string_view what);
    bool isMetalSpace(const ast::QualifiedName& name) const;
    StructRecord* recordOf(const Type* type) const;
    const Member* methodOf(const Type* type, Name name) const;

    // members.cpp
    tree::Expr* findField(tree::Expr* object, Name name, Range range);
    const Member* findMethod(const Type* type, Name name, const Type*& owner) const;
    bool derivesFrom(const Type* type, const Type* base) const;
    tree::Expr* asBase(tree::Expr* object, const Type* base);
    void structBases(const ast::Decl* decl, StructRecord& record, std::vector<Field>& fields);

    // types.cpp
    const Type* resolve(const ast::TypeSyntax* syntax);
    const Type* resolveNamed(const ast::TypeSyntax* syntax);
    const Type* resolveTemplate(const ast::QualifiedName& name);
    const Type* resolveTexture(const ast::QualifiedName& name);
    const Type* resolveArray(const ast::TypeSyntax* syntax, const ast::Expr* init);
    bool checkSize(const Type* type, Range range);

    // declarations.cpp
    void declaration(const ast::Decl* decl);
    void spaceDeclaration(const ast::Decl* decl);
    void structDeclaration(const ast::Decl* decl);
    void instantiation(const ast::Decl* decl);
    void defineStruct(const ast::Decl* decl, Type* type, const Instance* instance);
    void structFields(const ast::Decl* decl, Type* type, StructRecord& record);
    void structMethods(const ast::Decl* decl, Type* type, StructRecord& record, bool isInstance);
    void memberDefinition(const ast::Decl* decl, Space* space);
    bool attributeNumbers(std::span<ast::Attribute> attributes);
    void enumDeclaration(const ast::Decl* decl);
    void functionDeclaration(const ast::Decl* decl);
    void define(tree::Function& function);
    tree::Variable* makeParameter(tree::Function& function, const ast::Variable& syntax,
                                  tree::Expr*& init);
    tree::Function* makeFunction(const ast::Function& syntax, const Type* self);
    bool functionResult(tree::Function& function, const Type* self);
    bool trailingResult(tree::Function& function, const Type* self);
    void declareParameters(tree::Function& function);
    void analyseBody(tree::Function& function, StructRecord* record);
    bool constructorStart(tree::Function& function, std::vector<tree::Stmt*>& items);
    tree::Expr* initialMember(const tree::Function& function, const ast::Variable& init,
                              tree::Expr*& target);
    void globalVariable(const ast::Variable* variable);
    bool givenConstant(tree::Variable& variable, const ast::Attribute& attribute);
    tree::Variable* makeVariable(const ast::Variable& syntax, const Type* type,
                                 tree::VariableKind kind);
    bool sameParameters(const tree::Function& a, const tree::Function& b) const;
    bool writesSampler(const ast::Expr* init) const;
    bool internSampler(const SamplerOptions& options, tree::Variable& variable);
    tree::Expr* plainSampler(Range range);
    bool samplerVariable(const ast::Variable* syntax, tree::Variable* variable);
    void usingSpace(const ast::Decl* decl);
    void entryPoint(tree::Function& function);

    // statements.cpp
    tree::Stmt* statement(const ast::Stmt* stmt);
    tree::Stmt* statementAtDepth(const ast::Stmt* stmt);
    tree::Stmt* compound(const ast::Stmt* stmt);
    tree::Stmt* localDeclaration(const ast::Decl* decl, Range range);
    tree::Stmt* localVariable(const ast::Variable* variable);
    tree::Stmt* loop(const ast::Stmt* stmt);
    tree::Stmt* rangeLoop(const ast::Stmt* stmt);
    tree::Stmt* multiway(const ast::Stmt* stmt);
    tree::Stmt* returnStatement(const ast::Stmt* stmt);
    tree::Stmt* makeStmt(tree::StmtKind kind, Range range);
    tree::Stmt* block(const std::vector<tree::Stmt*>& items, Range range);
    tree::Expr* condition(const ast::Expr* expr);
    void noteAssigned(const tree::Expr* lvalue);

    // expressions.cpp
    tree::Expr* expression(const ast::Expr* expr);
    tree::Expr* expressionAtDepth(const ast::Expr* expr);
    tree::Expr* value(const ast::Expr* expr); // an expression that is no type, void or list
    tree::Expr* nameExpression(const ast::Expr* expr);
    tree::Expr* memberExpression(const ast::Expr* expr);
    tree::Expr* swizzle(tree::Expr* base, const ast::Expr* expr);
    tree::Expr* indexExpression(const ast::Expr* expr);
    tree::Expr* unary(const ast::Expr* expr);
    tree::Expr* binary(const ast::Expr* expr);
    tree::Expr* assign(const ast::Expr* expr);
    tree::Expr* assignmentCall(tree::Expr* target, const ast::Expr* expr);
    tree::Expr* conditional(const ast::Expr* expr);
    tree::Expr* stepExpression(const ast::Expr* expr, bool after);
    tree::Expr* pointerStep(tree::Expr* pointer, tree::Expr* count, TokenKind op, bool after,
                            Range range);
    tree::Expr* makeExpr(tree::ExprKind kind, const Type* type, Range range);
    tree::Expr* finish(tree::Expr* expr);
    tree::Expr* constantExpr(const Type* type, uint64_t bits, Range range);
    tree::Expr* variableExpr(tree::Variable* variable, Range range);
    tree::Expr* fieldExpr(tree::Expr* base, uint32_t index, Range range);
    tree::Expr* memberOf(tree::Expr* base, uint32_t index, Range range);
    tree::Expr* derefExpr(tree::Expr* pointer, Range range);
    tree::Expr* referenceTo(const Type* pointer, tree::Expr* target);
    bool binaryOperands(TokenKind op, tree::Expr*& a, tree::Expr*& b, Range range);
    tree::Expr* makeBinary(TokenKind op, tree::Expr* a, tree::Expr* b, Range range);
    tree::Expr* operatorCall(std::string_view name, std::vector<tree::Expr*> operands, Range range,
                             bool& found);
    bool writable(const tree::Expr* expr, Range range);

    // conversions.cpp
    Rank rank(const Type* from, const Type* to) const;
    Rank standardRank(const Type* from, const Type* to) const;
    const tree::Function* userConversion(const Type* from, const Type* to) const;
    const Member* conversionsOf(const Type* type) const;
    const tree::Function* userArithmetic(const Type* type) const;
    tree::Expr* decayed(tree::Expr* expr);
    tree::Expr* convert(tree::Expr* expr, const Type* to, Range range, std::string_view what);
    tree::Expr* convertTo(tree::Expr* expr, const Type* to);
    tree::Expr* explicitConvert(tree::Expr* expr, const Type* to, Range range);
    tree::Expr* promote(tree::Expr* expr);
    tree::Expr* pointerCast(tree::Expr* expr, const Type* to, Range range);
    const Type* commonScalar(const Type* a, const Type* b) const;
    tree::Expr* initialise(const Type* type, const ast::Expr* init, ast::InitKind kind);
    tree::Expr* fromList(const Type* type, std::span<ast::Expr* const> items,
                         std::span<const Name> designators, Range range, bool braces);
    bool wrapsElements(const Type* type, std::span<ast::Expr* const> items) const;
    tree::Expr* aggregate(const Type* type, std::span<ast::Expr* const> items,
                          std::span<const Name> designators, size_t& used, Range range);
    tree::Expr* unionFrom(const Type* type, std::span<ast::Expr* const> items,
                          std::span<const Name> designators, size_t& used, Range range);
    tree::Expr* vectorFrom(const Type* type, std::vector<tree::Expr*> parts, Range range);
    tree::Expr* matrixFrom(const Type* type, std::vector<tree::Expr*> parts, Range range);
    tree::Expr* defaultValue(const Type* type, Range range);
    tree::Expr* memberDefaults(const Type* type, Range range);
    tree::Function* defaultConstructor(const Type* type) const;

    // calls.cpp
    tree::Expr* call(const ast::Expr* expr);
    tree::Expr* memberCall(const ast::Expr* expr);
    tree::Expr* objectCall(tree::Expr* object, const ast::Expr* expr);
    bool mayInitialise(const ast::Expr& list, const tree::Variable& parameter) const;
    bool isSpecialisation(const Overload& overload, const ast::QualifiedName& name);
    tree::Expr* callOverloads(uint32_t set, tree::Expr* self, std::vector<tree::Expr*>& arguments,
                              const ast::QualifiedName* name, Range range, bool quiet);
    tree::Expr* unusualCall(const ast::Expr* expr, std::string_view name, bool& found);
    tree::Expr* functionConstant(const Type* type, uint32_t index, Range range);
    tree::Expr* atomicCall(const ast::Expr* expr, ir::Op whenSigned, ir::Op whenUnsigned,
                           size_t values);
    tree::Expr* callLibrary(std::span<const LibraryFunction> functions,
                            std::vector<tree::Expr*>& arguments, Range range);
    tree::Expr* tryLibrary(const LibraryFunction& function, std::vector<tree::Expr*>& arguments,
                           Range range, std::string* problem);
    const Type* deduce(const LibraryFunction& function, const std::vector<tree::Expr*>& arguments,
                       std::string* problem);
    const Type* parameterType(char letter, const Type* generic) const;
    tree::Expr* textureCall(const ast::Expr* expr, tree::Expr* texture, Name name);
    bool viable(const tree::Function& function, const tree::Expr* self,
                const std::vector<tree::Expr*>& arguments, std::vector<Rank>& ranks) const;
    void reportNoOverload(uint32_t set, const std::vector<tree::Expr*>& arguments, Range range,
                          bool ambiguous);

    // templates.cpp
    tree::Function* instantiate(const Overload& overload, const ast::QualifiedName* name,
                                const std::vector<tree::Expr*>& arguments);
    const Type* instantiateStruct(Template& pattern, const ast::QualifiedName& name);
    Symbol* instantiateVariable(Template& pattern, const ast::QualifiedName& name);
    void declareTemplate(const ast::Decl* decl);
    bool bindGiven(std::span<const ast::TemplateArgument> given, Parameters parameters,
                   Bindings& bindings);
    TemplateBinding bindOne(const GivenArgument& given, const ast::TemplateParameter& parameter);
    size_t specificity(const ast::Function& pattern) const;
    bool bindDefaults(Parameters parameters, Bindings& bindings, Space* parent);
    Space* parameterSpace(Parameters parameters, const Bindings& bindings, Space* parent);
    Space* parameterSpaceOfBound(Parameters parameters, const Bindings& bindings, Space* parent);
    void analysePending(tree::Function& function);
    const ast::Decl* specialisation(const Template& pattern, const Bindings& arguments,
                                    Bindings& bindings);
    bool spendInstance(Range range);

    // warnings.cpp
    void warnUnusedValue(const tree::Expr& expr);
    void warnLostFraction(const tree::Expr& expr, const Type* to);
    void warnAboutFunction(const tree::Function& function);

    // packs.cpp
    template <typename Pattern>
    std::optional<size_t> packLength(const Pattern& pattern, Range range);
    std::optional<size_t> parameterPackLength(const ast::Variable& parameter);
    std::span<ast::Expr* const> expandItems(std::span<ast::Expr* const> items);
    std::vector<GivenArgument> expandArguments(std::span<const ast::TemplateArgument> arguments,
                                               Range range);
    static Bindings flattened(const Bindings& bindings);
    template <typename Match>
    bool matchElement(Parameters parameters, Bindings& bindings, const Match& match);
    bool matchPackElement(const ast::TypeSyntax* syntax, const Type* type, Parameters parameters,
                          Bindings& bindings);
    bool matchList(std::span<const ast::TemplateArgument> syntax, const Bindings& given,
                   Parameters parameters, Bindings& bindings);
    Symbol* declarePack(SymbolKind kind, Name name, Range range, size_t count);
    tree::Expr* packElement(const ast::Expr* expr);
    tree::Expr* sizeOfPack(const ast::Expr* expr);
    bool match(const ast::TypeSyntax* syntax, const Type* type, Parameters parameters,
               Bindings& bindings);
    bool matchArgument(const ast::TemplateArgument& syntax, const TemplateBinding& given,
                       Parameters parameters, Bindings& bindings);
    bool argumentsOf(std::span<ast::Expr* const> items, std::vector<tree::Expr*>& result);
    tree::Expr* finishCall(tree::Function& function, tree::Expr* self,
                           std::vector<tree::Expr*>& arguments, Range range);
    bool bindsReference(const tree::Variable& parameter, const tree::Expr* argument) const;
    std::string signature(const tree::Function& function) const;

    // constants.cpp
    struct Scalar {
        const Type* type = nullptr;
        uint64_t bits = 0;
    };
    std::optional<Scalar> evaluate(const tree::Expr* expr);
    std::optional<Scalar> evaluateAtDepth(const tree::Expr* expr);
    std::optional<int64_t> integerConstant(const ast::Expr* expr, std::string_view what);
    static std::optional<Scalar> convertScalar(Scalar value, const Type* to);
    static std::optional<Scalar> foldUnary(TokenKind op, const Type* type, Scalar value);
    static std::optional<Scalar> foldBinary(TokenKind op, const Type* type, Scalar left,
                                            Scalar right);
    bool spendConstantStep();

    void error(Range range, std::string message) { diagnostics_.error(range, std::move(message)); }
    bool tooDeep(Range range);

    NameTable& names_;
    Arena& arena_;
    TypeTable& types_;
    Diagnostics& diagnostics_;
    tree::Unit unit_;
    Space global_;
    Space metal_;
    Space* space_ = &global_;
    std::vector<Space*> used_;
    std::vector<Symbol*> scope_; // local meanings, in order of declaration
    size_t scopeStart_ = 0;      // where the innermost block begins in it
    std::vector<std::vector<Overload>> overloads_;
    std::vector<Instance> instances_;
    std::vector<std::unique_ptr<Template>> templates_;
    std::unordered_map<const Type*, StructRecord*> records_;
    std::vector<std::unique_ptr<StructRecord>> recordStorage_;
    FunctionState* state_ = nullptr;
    std::unordered_map<const ast::Decl*, const Type*> declaredTypes_;
    // Expressions analysed to learn their type, whose analysis is used when they are met again.
    std::unordered_map<const ast::Expr*, tree::Expr*> pending_;
    uint32_t depth_ = 0;
    uint32_t templateDepth_ = 0;
    uint32_t constantSteps_ = 0;
    uint32_t allConstantSteps_ = 0;
    std::optional<size_t> packIndex_; // while a pattern is expanded: which element it is for
};

// A template of a struct, an alias or a variable, with its specialisations.
struct Template {
    const ast::Decl* primary = nullptr;
    std::vector<const ast::Decl*> specialisations;
    Space* space = nullptr; // that it stands in
};

} // namespace msl
