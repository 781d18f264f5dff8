#include "msl/parser/nesting.h"
#include "msl/parser/parser.h"

namespace msl {

using namespace ast;

Stmt* Parser::makeStmt(StmtKind kind, const Token& first) {
    auto* stmt = arena_.make<Stmt>();
    stmt->kind = kind;
    stmt->range = first.range();
    return stmt;
}

Stmt* Parser::statement() {
    const Nesting nesting(*this);
    return nesting.refused() ? nullptr : statementAtDepth();
}

Stmt* Parser::compound() {
    const Token& open = peek();
    if (!expect(TokenKind::leftBrace, "at the start of the block")) {
        return nullptr;
    }
    Stmt* block = makeStmt(StmtKind::compound, open);
    const size_t mark = openScope();
    std::vector<Stmt*> items;
    while (!at(TokenKind::rightBrace) && !at(TokenKind::endOfFile) && !diagnostics_.exhausted()) {
        const size_t before = position_;
        if (Stmt* item = statement()) {
            items.push_back(item);
        } else {
            skipTo(true);
            if (position_ == before) {
                advance();
            }
        }
    }
    closeScope(mark);
    if (!accept(TokenKind::rightBrace)) {
        if (!diagnostics_.exhausted() && !tooDeep_) {
            error(open, "this '{' is never closed");
        }
        return nullptr;
    }
    block->items = arena_.copy(items);
    return block;
}

Decl* Parser::blockDeclaration() {
    Decl* decl = declaration(false);
    if (decl != nullptr && decl->kind == DeclKind::function && decl->function->body != nullptr) {
        diagnostics_.error(decl->range, "a function cannot be defined inside another");
    }
    return decl;
}

Stmt* Parser::ifStatement() {
    Stmt* stmt = makeStmt(StmtKind::ifElse, advance());
    accept(Keyword::constexprWord);
    if (!expect(TokenKind::leftParen, "after 'if'")) {
        return nullptr;
    }
    const size_t mark = openScope();
    if (startsDeclaration()) {
        // "if (T x = ...)": the declaration's value is the condition.
        Specifiers parts;
        Declarator name;
        if (!specifiers(parts) || !declarator(parts, name, false)) {
            return nullptr;
        }
        Variable* variable = variableRest(parts, name);
        if (variable == nullptr) {
            return nullptr;
        }
        stmt->decl = makeDecl(DeclKind::variables, name.range);
        stmt->decl->variables = arena_.copy(std::vector<Variable*>{variable});
        stmt->expr = makeExpr(ExprKind::name, name.range);
        stmt->expr->name = name.name;
    } else {
        stmt->expr = expression();
    }
    if (stmt->expr == nullptr || !expect(TokenKind::rightParen, "after the condition")) {
        return nullptr;
    }
    stmt->body = statement();
    if (stmt->body == nullptr) {
        return nullptr;
    }
    if (accept(Keyword::elseWord)) {
        stmt->otherwise = statement();
        if (stmt->otherwise == nullptr) {
            return nullptr;
        }
    }
    closeScope(mark);
    return stmt;
}

Stmt* Parser::forStatement() {
    Stmt* stmt = makeStmt(StmtKind::forLoop, advance());
    if (!expect(TokenKind::leftParen, "after 'for'")) {
        return nullptr;
    }
    const size_t mark = openScope();
    if (startsDeclaration()) {
        Specifiers parts;
        Declarator name;
        const size_t before = position_;
        if (specifiers(parts) && declarator(parts, name, false) && at(TokenKind::colon)) {
            advance();
            stmt->kind = StmtKind::rangeFor;
            auto* variable = arena_.make<Variable>();
            variable->range = name.range;
            variable->name = name.name->name;
            variable->type = name.type;
            declare(variable->name, ParserKind::value);
            stmt->decl = makeDecl(DeclKind::variables, name.range);
            stmt->decl->variables = arena_.copy(std::vector<Variable*>{variable});
            stmt->expr = expression();
            if (stmt->expr == nullptr || !expect(TokenKind::rightParen, "after the range")) {
                return nullptr;
            }
            stmt->body = statement();
            closeScope(mark);
            return stmt->body == nullptr ? nullptr : stmt;
        }
        position_ = before;
        const Token& first = peek();
        stmt->init = makeStmt(StmtKind::declaration, first);
        stmt->init->decl = blockDeclaration();
        if (stmt->init->decl == nullptr) {
            return nullptr;
        }
    } else if (!accept(TokenKind::semicolon)) {
        stmt->init = makeStmt(StmtKind::expression, peek());
        stmt->init->expr = expression();
        if (stmt->init->expr == nullptr ||
            !expect(TokenKind::semicolon, "after the loop's initialiser")) {
            return nullptr;
        }
    }
    if (!at(TokenKind::semicolon)) {
        stmt->expr = expression();
        if (stmt->expr == nullptr) {
            return nullptr;
        }
    }
    if (!expect(TokenKind::semicolon, "after the loop's condition")) {
        return nullptr;
    }
    if (!at(TokenKind::rightParen)) {
        stmt->step = expression();
        if (stmt->step == nullptr) {
            return nullptr;
        }
    }
    if (!expect(TokenKind::rightParen, "after the loop's step")) {
        return nullptr;
    }
    stmt->body = statement();
    closeScope(mark);
    return stmt->body == nullptr ? nullptr : stmt;
}

Stmt* Parser::switchStatement() {
    Stmt* stmt = makeStmt(StmtKind::switchCase, advance());
    if (!expect(TokenKind::leftParen, "after 'switch'")) {
        return nullptr;
    }
    stmt->expr = expression();
    if (stmt->expr == nullptr || !expect(TokenKind::rightParen, "after the value")) {
        return nullptr;
    }
    stmt->body = compound();
    return stmt->body == nullptr ? nullptr : stmt;
}

Stmt* Parser::statementAtDepth() {
    while (at(TokenKind::leftBracket) && peek(1).is(TokenKind::leftBracket)) {
        const size_t before = position_;
        attributes();
        if (startsDeclaration()) {
            position_ = before; // they are the declaration's
            break;
        }
        if (position_ == before) {
            break;
        }
    }
    const Token& token = peek();
    switch (token.kind) {
    case TokenKind::leftBrace:
        return compound();
    case TokenKind::semicolon:
        return makeStmt(StmtKind::empty, advance());
    default:
        break;
    }
    switch (token.is(TokenKind::identifier) ? token.name->keyword : Keyword::none) {
    case Keyword::ifWord:
        return ifStatement();
    case Keyword::forWord:
        return forStatement();
    case Keyword::switchWord:
        return switchStatement();
    case Keyword::whileWord: {
        Stmt* stmt = makeStmt(StmtKind::whileLoop, advance());
        if (!expect(TokenKind::leftParen, "after 'while'")) {
            return nullptr;
        }
        stmt->expr = expression();
        if (stmt->expr == nullptr || !expect(TokenKind::rightParen, "after the condition")) {
            return nullptr;
        }
        stmt->body = statement();
        return stmt->body == nullptr ? nullptr : stmt;
    }
    case Keyword::doWord: {
        Stmt* stmt = makeStmt(StmtKind::doLoop, advance());
        stmt->body = statement();
        if (stmt->body == nullptr) {
            return nullptr;
        }
        if (!accept(Keyword::whileWord)) {
            unexpected("'while' after the body of 'do'");
            return nullptr;
        }
        if (!expect(TokenKind::leftParen, "after 'while'")) {
            return nullptr;
        }
        stmt->expr = expression();
        return stmt->expr != nullptr && expect(TokenKind::rightParen, "after the condition") &&
                       expect(TokenKind::semicolon, "after the loop")
                   ? stmt
                   : nullptr;
    }
    case Keyword::caseWord: {
        Stmt* stmt = makeStmt(StmtKind::caseLabel, advance());
        stmt->expr = binary(1);
        return stmt->expr != nullptr && expect(TokenKind::colon, "after the case") ? stmt : nullptr;
    }
    case Keyword::defaultWord: {
        Stmt* stmt = makeStmt(StmtKind::defaultLabel, advance());
        return expect(TokenKind::colon, "after 'default'") ? stmt : nullptr;
    }
    case Keyword::breakWord:
    case Keyword::continueWord: {
        Stmt* stmt = makeStmt(
            token.is(Keyword::breakWord) ? StmtKind::breakLoop : StmtKind::continueLoop, advance());
        return expect(TokenKind::semicolon, "after the statement") ? stmt : nullptr;
    }
    case Keyword::returnWord: {
        Stmt* stmt = makeStmt(StmtKind::returnValue, advance());
        if (!at(TokenKind::semicolon)) {
            stmt->expr = at(TokenKind::leftBrace) ? initList() : expression();
            if (stmt->expr == nullptr) {
                return nullptr;
            }
        }
        return expect(TokenKind::semicolon, "after the returned value") ? stmt : nullptr;
    }
    case Keyword::gotoWord:
        error(token, "the language has no 'goto'");
        return nullptr;
    case Keyword::elseWord:
        error(token, "there is no 'if' for this 'else'");
        return nullptr;
    default:
        break;
    }
    // "name name" can only be a declaration whose type is not known; parsing it as one says so.
    const bool unknownType = atIdentifier() && peek(1).is(TokenKind::identifier) &&
                             peek(1).name->keyword == Keyword::none;
    if (startsDeclaration() || unknownType) {
        Stmt* stmt = makeStmt(StmtKind::declaration, token);
        stmt->decl = blockDeclaration();
        return stmt->decl == nullptr ? nullptr : stmt;
    }
    Stmt* stmt = makeStmt(StmtKind::expression, token);
    stmt->expr = expression();
    return stmt->expr != nullptr && expect(TokenKind::semicolon, "after the expression") ? stmt
                                                                                         : nullptr;
}

} // namespace msl
