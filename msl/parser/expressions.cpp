#include <algorithm>

#include "msl/parser/nesting.h"
#include "msl/parser/parser.h"

namespace msl {

using namespace ast;

namespace {

bool isAssignment(TokenKind kind) {
    return kind == TokenKind::equal ||
           (kind >= TokenKind::plusEqual && kind <= TokenKind::percentEqual) ||
           (kind >= TokenKind::ampersandEqual && kind <= TokenKind::shiftRightEqual);
}

} // namespace

Expr* Parser::makeExpr(ExprKind kind, Range range) {
    auto* expr = arena_.make<Expr>();
    expr->kind = kind;
    expr->range = range;
    return expr;
}

bool Parser::finish(Expr* expr) {
    uint32_t depth = 0;
    for (const Expr* child : {expr->a, expr->b, expr->c}) {
        depth = child != nullptr ? std::max<uint32_t>(depth, child->depth) : depth;
    }
    for (const Expr* child : expr->items) {
        depth = std::max<uint32_t>(depth, child->depth);
    }
    expr->depth = static_cast<uint16_t>(depth + 1);
    if (expr->depth > kMaxExpressionDepth) {
        diagnostics_.error(expr->range, "an expression is nested more than " +
                                            std::to_string(kMaxExpressionDepth) + " deep");
        return false;
    }
    return true;
}

Expr* Parser::expression() {
    Expr* left = assignment();
    while (left != nullptr && at(TokenKind::comma)) {
        Expr* comma = makeExpr(ExprKind::comma, advance().range());
        comma->a = left;
        comma->b = assignment();
        if (comma->b == nullptr || !finish(comma)) {
            return nullptr;
        }
        left = comma;
    }
    return left;
}

Expr* Parser::assignment() {
    const Nesting nesting(*this);
    return nesting.refused() ? nullptr : assignmentAtDepth();
}

Expr* Parser::assignmentAtDepth() {
    Expr* left = binary(1);
    if (left == nullptr) {
        return nullptr;
    }
    if (at(TokenKind::question)) {
        Expr* choice = makeExpr(ExprKind::conditional, advance().range());
        choice->a = left;
        const uint32_t outerAngle = angleDepth_;
        angleDepth_ = 0;
        choice->b = expression();
        angleDepth_ = outerAngle;
        if (choice->b == nullptr || !expect(TokenKind::colon, "of the conditional expression")) {
            return nullptr;
        }
        choice->c = assignment();
        return choice->c == nullptr || !finish(choice) ? nullptr : choice;
    }
    if (isAssignment(peek().kind)) {
        Expr* assign = makeExpr(ExprKind::assign, peek().range());
        assign->op = advance().kind;
        assign->a = left;
        assign->b = initializer();
        return assign->b == nullptr || !finish(assign) ? nullptr : assign;
    }
    return left;
}

Expr* Parser::binary(int lowest) {
    Expr* left = unary();
    while (left != nullptr) {
        const auto kind = peek().kind;
        const int strength = binaryPrecedence(kind);
        if (strength < lowest || strength == 0) {
            return left;
        }
        if (angleDepth_ > 0 && (kind == TokenKind::greater || kind == TokenKind::shiftRight)) {
            return left;
        }
        const bool logical = kind == TokenKind::pipePipe || kind == TokenKind::ampersandAmpersand;
        Expr* expr = makeExpr(logical ? ExprKind::logical : ExprKind::binary, peek().range());
        expr->op = advance().kind;
        expr->a = left;
        expr->b = binary(strength + 1);
        if (expr->b == nullptr || !finish(expr)) {
            return nullptr;
        }
        left = expr;
    }
    return nullptr;
}

Expr* Parser::unary() {
    const Nesting nesting(*this);
    return nesting.refused() ? nullptr : unaryAtDepth();
}

// Whether the parenthesis at the front holds a type: "(float3)x".
bool Parser::castAhead() const {
    if (!at(TokenKind::leftParen)) {
        return false;
    }
    // "(float3(1))" is an expression in parentheses, "(float3)x" a cast.
    auto* self = const_cast<Parser*>(this);
    const size_t before = position_;
    ++self->position_;
    const bool type = startsType();
    const auto after = peek(skipName(0)).kind;
    self->position_ = before;
    return type && after != TokenKind::leftParen && after != TokenKind::leftBrace &&
           after != TokenKind::colonColon;
}

Expr* Parser::unaryAtDepth() {
    const Token& token = peek();
    switch (token.kind) {
    case TokenKind::plus:
    case TokenKind::minus:
    case TokenKind::exclamation:
    case TokenKind::tilde:
    case TokenKind::star:
    case TokenKind::ampersand:
    case TokenKind::plusPlus:
    case TokenKind::minusMinus: {
        Expr* expr = makeExpr(ExprKind::unary, token.range());
        expr->op = advance().kind;
        expr->a = unary();
        return expr->a == nullptr || !finish(expr) ? nullptr : expr;
    }
    case TokenKind::leftParen:
        if (castAhead()) {
            Expr* expr = makeExpr(ExprKind::cast, token.range());
            advance();
            expr->type = typeName();
            if (expr->type == nullptr || !expect(TokenKind::rightParen, "after the type")) {
                return nullptr;
            }
            if (at(TokenKind::leftBrace)) {
                expr->kind = ExprKind::construct;
                expr->braces = true;
                Expr* list = initList();
                if (list == nullptr) {
                    return nullptr;
                }
                expr->items = list->items;
                expr->designators = list->designators;
                return finish(expr) ? postfix(expr) : nullptr;
            }
            expr->a = unary();
            return expr->a == nullptr || !finish(expr) ? nullptr : expr;
        }
        break;
    case TokenKind::identifier:
        if (token.is(Keyword::sizeofWord) || token.is(Keyword::alignofWord)) {
            Expr* expr =
                makeExpr(token.is(Keyword::sizeofWord) ? ExprKind::sizeOf : ExprKind::alignOf,
                         token.range());
            advance();
            if (accept(TokenKind::ellipsis)) {
                expr->kind = ExprKind::sizeOfPack;
                if (!expect(TokenKind::leftParen, "after 'sizeof...'")) {
                    return nullptr;
                }
                expr->name = qualifiedName(false);
                return expr->name != nullptr && expect(TokenKind::rightParen, "after the pack")
                           ? expr
                           : nullptr;
            }
            if (at(TokenKind::leftParen)) {
                const size_t before = position_;
                advance();
                if (at(Keyword::decltypeWord) ||
                    (startsType() && !peek(skipName(0)).is(TokenKind::leftParen))) {
                    expr->type = typeName();
                    return expr->type != nullptr && expect(TokenKind::rightParen, "after the type")
                               ? expr
                               : nullptr;
                }
                position_ = before;
            }
            expr->a = unary();
            return expr->a == nullptr || !finish(expr) ? nullptr : expr;
        }
        break;
    default:
        break;
    }
    Expr* base = primary();
    return base == nullptr ? nullptr : postfix(base);
}

bool Parser::arguments(TokenKind close, std::vector<Expr*>& list) {
    const uint32_t outerAngle = angleDepth_;
    angleDepth_ = 0;
    bool good = true;
    if (!at(close)) {
        do {
            if (at(close)) {
                break; // a trailing comma in braces
            }
            Expr* argument = expanded(initializer());
            if (argument == nullptr) {
                good = false;
                break;
            }
            list.push_back(argument);
        } while (accept(TokenKind::comma));
    }
    angleDepth_ = outerAngle;
    return good && expect(close, "after the arguments");
}

// The pattern, or its expansion where "..." follows.
Expr* Parser::expanded(Expr* pattern) {
    if (pattern == nullptr || !at(TokenKind::ellipsis)) {
        return pattern;
    }
    Expr* expansion = makeExpr(ExprKind::packExpansion, pattern->range);
    advance();
    expansion->a = pattern;
    return finish(expansion) ? expansion : nullptr;
}

Expr* Parser::initList() {
    const Nesting nesting(*this);
    if (nesting.refused()) {
        return nullptr;
    }
    Expr* list = makeExpr(ExprKind::list, peek().range());
    advance();
    std::vector<Expr*> items;
    std::vector<Name> designators;
    bool designated = false;
    const uint32_t outerAngle = angleDepth_;
    angleDepth_ = 0;
    while (!at(TokenKind::rightBrace)) {
        Name designator = nullptr;
        if (at(TokenKind::dot)) {
            advance();
            Range range;
            if (!expectName(designator, range, "a member's name") ||
                !expect(TokenKind::equal, "after the member's name")) {
                return nullptr;
            }
            designated = true;
        }
        Expr* item = expanded(initializer());
        if (item == nullptr) {
            return nullptr;
        }
        items.push_back(item);
        designators.push_back(designator);
        if (!accept(TokenKind::comma)) {
            break;
        }
    }
    angleDepth_ = outerAngle;
    if (!expect(TokenKind::rightBrace, "at the end of the initialiser")) {
        return nullptr;
    }
    list->items = arena_.copy(items);
    if (designated) {
        list->designators = arena_.copy(designators);
    }
    return finish(list) ? list : nullptr;
}

// The name behind a '.' or '->'. Which members are templates is not known here: "m<type>(" and
// "m<number>(" can hardly be anything else.
QualifiedName* Parser::memberName() {
    const size_t at = peek().is(Keyword::templateWord) ? 1 : 0;
    const Token& first = peek(at);
    if (!first.is(TokenKind::identifier) || !peek(at + 1).is(TokenKind::less) ||
        !peek(at + skipName(at)).is(TokenKind::leftParen)) {
        return qualifiedName(false);
    }
    const size_t before = position_;
    position_ += at + 2;
    const bool isTemplate = this->at(TokenKind::number) || startsType();
    position_ = before;
    const auto kind = first.name->parserKind;
    if (isTemplate) {
        first.name->parserKind = ParserKind::functionTemplate;
    }
    auto* result = qualifiedName(false);
    first.name->parserKind = kind;
    return result;
}

Expr* Parser::postfix(Expr* base) {
    while (base != nullptr) {
        const Token& token = peek();
        Expr* expr = nullptr;
        switch (token.kind) {
        case TokenKind::leftParen: {
            expr = makeExpr(ExprKind::call, base->range);
            advance();
            std::vector<Expr*> list;
            if (!arguments(TokenKind::rightParen, list)) {
                return nullptr;
            }
            expr->a = base;
            expr->items = arena_.copy(list);
            break;
        }
        case TokenKind::leftBracket: {
            if (peek(1).is(TokenKind::leftBracket)) {
                return base;
            }
            expr = makeExpr(ExprKind::index, token.range());
            advance();
            const uint32_t outerAngle = angleDepth_;
            angleDepth_ = 0;
            expr->a = base;
            expr->b = expression();
            angleDepth_ = outerAngle;
            if (expr->b == nullptr || !expect(TokenKind::rightBracket, "after the index")) {
                return nullptr;
            }
            break;
        }
        case TokenKind::dot:
        case TokenKind::arrow: {
            expr = makeExpr(ExprKind::member, peek(1).range());
            expr->op = advance().kind;
            expr->a = base;
            expr->name = memberName();
            if (expr->name == nullptr) {
                return nullptr;
            }
            break;
        }
        case TokenKind::plusPlus:
        case TokenKind::minusMinus:
            expr = makeExpr(ExprKind::postfix, token.range());
            expr->op = advance().kind;
            expr->a = base;
            break;
        default:
            return base;
        }
        if (!finish(expr)) {
            return nullptr;
        }
        base = expr;
    }
    return base;
}

Expr* Parser::primary() {
    const Token& token = peek();
    switch (token.kind) {
    case TokenKind::number:
        return number();
    case TokenKind::character: {
        Expr* expr = makeExpr(ExprKind::intLiteral, token.range());
        advance();
        const auto text = token.text();
        expr->literalType = scalarType(TypeKind::charType);
        if (text.size() == 3) {
            expr->intValue = static_cast<uint64_t>(static_cast<int64_t>(text[1]));
        } else if (text.size() == 4 && text[1] == '\\') {
            static constexpr std::string_view kLetters = "ntr0\\'\"abfv";
            static constexpr std::string_view kValues("\n\t\r\0\\'\"\a\b\f\v", 11);
            const auto index = kLetters.find(text[2]);
            if (index == std::string_view::npos) {
                error(token, "this escape is not known");
                return nullptr;
            }
            expr->intValue = static_cast<uint64_t>(kValues[index]);
        } else {
            error(token, "a character literal holds one character");
            return nullptr;
        }
        return expr;
    }
    case TokenKind::leftParen: {
        advance();
        const uint32_t outerAngle = angleDepth_;
        angleDepth_ = 0;
        Expr* inner = expression();
        angleDepth_ = outerAngle;
        if (inner == nullptr || !expect(TokenKind::rightParen, "after the expression")) {
            return nullptr;
        }
        inner->grouped = true;
        return inner;
    }
    case TokenKind::string:
        error(token, "string literals have no use in a shader");
        return nullptr;
    case TokenKind::leftBracket:
        error(token, "the language has no lambda expressions; write a function, or a struct with "
                     "'operator()'");
        return nullptr;
    case TokenKind::identifier:
    case TokenKind::colonColon:
        break;
    default:
        unexpected("an expression");
        return nullptr;
    }
    if (token.is(Keyword::trueWord) || token.is(Keyword::falseWord)) {
        Expr* expr = makeExpr(ExprKind::boolLiteral, token.range());
        expr->intValue = advance().is(Keyword::trueWord) ? 1 : 0;
        return expr;
    }
    if (token.is(Keyword::nullptrWord)) {
        advance();
        return makeExpr(ExprKind::nullLiteral, token.range());
    }
    if (token.is(Keyword::thisWord)) {
        advance();
        return makeExpr(ExprKind::thisObject, token.range());
    }
    if (token.is(Keyword::staticCastWord) || token.is(Keyword::asType) ||
        token.is(Keyword::reinterpretCastWord) || token.is(Keyword::constCastWord)) {
        Expr* expr =
            makeExpr(token.is(Keyword::asType) ? ExprKind::bitCast : ExprKind::cast, token.range());
        advance();
        if (!at(TokenKind::less)) {
            unexpected("'<' and a type");
            return nullptr;
        }
        advance();
        ++angleDepth_;
        expr->type = typeName();
        --angleDepth_;
        if (expr->type == nullptr || !closeAngle() ||
            !expect(TokenKind::leftParen, "before the value")) {
            return nullptr;
        }
        const uint32_t outerAngle = angleDepth_;
        angleDepth_ = 0;
        expr->a = expression();
        angleDepth_ = outerAngle;
        return expr->a != nullptr && expect(TokenKind::rightParen, "after the value") &&
                       finish(expr)
                   ? expr
                   : nullptr;
    }
    // "metal::as_type<...>" and the like.
    if (token.is(TokenKind::identifier) && peek(1).is(TokenKind::colonColon) &&
        peek(2).is(Keyword::asType)) {
        advance();
        advance();
        return primary();
    }
    if (startsType()) {
        Expr* expr = makeExpr(ExprKind::construct, token.range());
        Specifiers parts;
        if (!specifiers(parts)) {
            return nullptr;
        }
        expr->type = parts.type;
        if (parts.type->kind == TypeSyntaxKind::named && parts.type->name->owner != nullptr &&
            !token.is(Keyword::typenameWord)) {
            // A<T>::b is a value unless "typename" says that it is a type.
            expr->kind = ExprKind::name;
            expr->name = parts.type->name;
            expr->range = expr->name->range;
            return expr;
        }
        std::vector<Expr*> list;
        if (at(TokenKind::leftBrace)) {
            expr->braces = true;
            Expr* init = initList();
            if (init == nullptr) {
                return nullptr;
            }
            expr->items = init->items;
            expr->designators = init->designators;
            return finish(expr) ? expr : nullptr;
        }
        if (at(TokenKind::colonColon)) {
            unexpected("a member of the type");
            return nullptr;
        }
        if (!expect(TokenKind::leftParen, "after the type") ||
            !arguments(TokenKind::rightParen, list)) {
            return nullptr;
        }
        expr->items = arena_.copy(list);
        return finish(expr) ? expr : nullptr;
    }
    Expr* expr = makeExpr(ExprKind::name, token.range());
    expr->name = qualifiedName(false);
    if (expr->name == nullptr) {
        return nullptr;
    }
    expr->range = expr->name->range;
    if (at(TokenKind::leftBrace) && !expr->name->spaces.empty()) {
        // A::B{...}
        expr->kind = ExprKind::construct;
        expr->braces = true;
        expr->type = arena_.make<TypeSyntax>();
        expr->type->kind = TypeSyntaxKind::named;
        expr->type->name = expr->name;
        expr->type->range = expr->range;
        Expr* init = initList();
        if (init == nullptr) {
            return nullptr;
        }
        expr->items = init->items;
        expr->designators = init->designators;
        return finish(expr) ? expr : nullptr;
    }
    return expr;
}

Expr* Parser::number() {
    const Token& token = advance();
    Expr* expr = makeExpr(ExprKind::intLiteral, token.range());
    std::string problem;
    if (!parseNumber(token.text(), *expr, problem)) {
        error(token, problem);
        return nullptr;
    }
    return expr;
}

} // namespace msl
