// Builds the syntax tree from the preprocessor's tokens.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "msl/parser/ast.h"

namespace msl {

class Parser {
  public:
    Parser(std::span<const Token> tokens, NameTable& names, Arena& arena, Diagnostics& diagnostics);

    // The declarations of the whole unit. What cannot be parsed is reported and left out.
    std::vector<ast::Decl*> run();

  private:
    // What stands before a declarator.
    struct Specifiers {
        ast::TypeSyntax* type = nullptr;
        ast::Decl* defined = nullptr; // a struct or enum defined in place
        std::span<ast::Attribute> attributes{};
        AddressSpace space = AddressSpace::none;
        ast::FunctionStage stage = ast::FunctionStage::none;
        bool isConst = false;
        bool isConstexpr = false;
        bool isStatic = false;
        bool isTypedef = false;
        bool isExplicit = false;
        bool isConversion = false; // "operator T" follows
    };
    struct Declarator {
        ast::TypeSyntax* type = nullptr;
        ast::QualifiedName* name = nullptr;
        Range range;
        bool isPack = false;
        std::vector<ast::Attribute> attributes{}; // between the name and its array lengths
    };
    struct ShadowedName {
        Name name;
        ParserKind kind;
    };
    class Nesting;

    const Token& peek(size_t ahead = 0) const {
        return tokens_[position_ + ahead < tokens_.size() ? position_ + ahead : tokens_.size() - 1];
    }
    const Token& advance();
    bool at(TokenKind kind) const { return peek().is(kind); }
    bool at(Keyword word) const { return peek().is(word); }
    bool accept(TokenKind kind);
    bool accept(Keyword word);
    bool expect(TokenKind kind, std::string_view where);
    bool expectName(Name& name, Range& range, std::string_view what);
    void error(const Token& token, std::string message);
    void unexpected(std::string_view wanted);
    void skipTo(bool stopAtBrace);
    bool atIdentifier() const;
    AddressSpace addressSpaceWord() const;
    void declare(Name name, ParserKind kind);
    size_t openScope() const { return shadowed_.size(); }
    void closeScope(size_t mark);
    const Type* builtinTypeOf(Name name) const;
    Range rangeFrom(const Token& first) const;

    // declarations.cpp
    ast::Decl* declaration(bool member);
    ast::Decl* declarationAtDepth(bool member);
    ast::Decl* templateDeclaration(bool member);
    ast::Decl* instantiation();
    bool templateParameter(ast::TemplateParameter& parameter);
    ast::Decl* spaceDeclaration();
    ast::Decl* usingDeclaration();
    ast::Decl* staticAssertion();
    ast::Decl* simpleDeclaration(bool member, std::span<ast::TemplateParameter> parameters,
                                 bool isTemplate);
    ast::Decl* functionRest(const Specifiers& specifiers, const Declarator& declarator);
    bool parameters(std::vector<ast::Variable*>& list);
    ast::Variable* variableRest(const Specifiers& specifiers, const Declarator& declarator);
    ast::Decl* structDeclaration(bool& definition);
    bool baseStructs(ast::Decl& decl);
    ast::Decl* enumDeclaration();
    bool functionBody(ast::Function& function);
    bool memberInitializers(ast::Function& function);
    bool looksLikeParameters() const;
    ast::Decl* makeDecl(ast::DeclKind kind, Range range);
    ast::Decl* inStruct_ = nullptr;
    bool derived_ = false;    // names that are not known may be types of the struct's bases
    bool inTemplate_ = false; // the declaration at hand is a template's

    // type_syntax.cpp
    bool specifiers(Specifiers& result);
    bool typeSpecifier(Specifiers& result, bool& seen);
    bool declarator(const Specifiers& specifiers, Declarator& result, bool abstract);
    ast::TypeSyntax* typeName(bool* expands = nullptr);
    bool operatorName(ast::QualifiedName& name);
    ast::TypeSyntax* builtinSyntax(const Type* type, Range range);
    bool arraySuffixes(ast::TypeSyntax*& type);
    std::vector<ast::Attribute> attributes();
    bool startsType() const;
    bool startsDeclaration() const;
    ast::QualifiedName* qualifiedName(bool asType);
    bool templateArguments(std::vector<ast::TemplateArgument>& list);
    size_t skipQualifiers(size_t ahead) const;
    size_t skipName(size_t ahead) const;
    void attributeArgument(ast::Attribute& attribute);
    bool closeAngle();

    // statements.cpp
    ast::Stmt* statement();
    ast::Stmt* statementAtDepth();
    ast::Stmt* compound();
    ast::Stmt* ifStatement();
    ast::Stmt* forStatement();
    ast::Stmt* switchStatement();
    ast::Stmt* makeStmt(ast::StmtKind kind, const Token& first);
    ast::Decl* blockDeclaration();

    // expressions.cpp
    ast::Expr* expression();
    ast::Expr* assignment();
    ast::Expr* assignmentAtDepth();
    ast::Expr* binary(int lowest);
    ast::Expr* unary();
    ast::Expr* unaryAtDepth();
    ast::Expr* postfix(ast::Expr* base);
    ast::QualifiedName* memberName();
    ast::Expr* primary();
    ast::Expr* number();
    ast::Expr* expanded(ast::Expr* pattern);
    ast::Expr* initList();
    ast::Expr* initializer() { return at(TokenKind::leftBrace) ? initList() : assignment(); }
    bool arguments(TokenKind close, std::vector<ast::Expr*>& list);
    ast::Expr* makeExpr(ast::ExprKind kind, Range range);
    bool finish(ast::Expr* expr); // computes the depth; false where it is too great
    bool castAhead() const;

    std::span<const Token> tokens_;
    NameTable& names_;
    Arena& arena_;
    Diagnostics& diagnostics_;
    std::vector<ShadowedName> shadowed_;
    size_t position_ = 0;
    uint32_t depth_ = 0;
    uint32_t angleDepth_ = 0; // inside < >, where > is no operator
    bool halfAngle_ = false;  // the first '>' of the '>>' at position_ is used up
    bool tooDeep_ = false;
};

// The value of a number's spelling. False where it is none.
bool parseNumber(std::string_view text, ast::Expr& literal, std::string& problem);

} // namespace msl
