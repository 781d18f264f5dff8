#include "msl/parser/parser.h"

#include "msl/parser/nesting.h"

namespace msl {

Parser::Parser(std::span<const Token> tokens, NameTable& names, Arena& arena,
               Diagnostics& diagnostics)
    : tokens_(tokens), names_(names), arena_(arena), diagnostics_(diagnostics) {}

std::vector<ast::Decl*> Parser::run() {
    std::vector<ast::Decl*> unit;
    while (!at(TokenKind::endOfFile) && !diagnostics_.exhausted()) {
        if (accept(TokenKind::semicolon)) {
            continue;
        }
        const size_t before = position_;
        if (auto* decl = declaration(false)) {
            unit.push_back(decl);
        } else {
            skipTo(false);
            if (position_ == before) {
                advance();
            }
        }
    }
    return unit;
}

const Token& Parser::advance() {
    const Token& token = peek();
    if (position_ + 1 < tokens_.size()) {
        ++position_;
    }
    return token;
}

bool Parser::accept(TokenKind kind) {
    if (!at(kind)) {
        return false;
    }
    advance();
    return true;
}

bool Parser::accept(Keyword word) {
    if (!at(word)) {
        return false;
    }
    advance();
    return true;
}

void Parser::error(const Token& token, std::string message) {
    diagnostics_.error(token.range(), std::move(message));
}

void Parser::unexpected(std::string_view wanted) {
    const Token& token = peek();
    const std::string found =
        token.is(TokenKind::endOfFile)
            ? "the end of the file"
            : "'" +
                  std::string(token.is(TokenKind::identifier) || token.characters != nullptr
                                  ? token.text()
                                  : spelling(token.kind)) +
                  "'";
    error(token, "expected " + std::string(wanted) + ", found " + found);
}

bool Parser::expect(TokenKind kind, std::string_view where) {
    if (accept(kind)) {
        return true;
    }
    // What is missing belongs to the end of what stands before, not to the next line.
    if (kind == TokenKind::semicolon && position_ > 0 && (peek().flags & Token::kStartsLine) != 0) {
        const Token& last = tokens_[position_ - 1];
        diagnostics_.error({{last.location.offset + last.length}, 1},
                           "expected ';' " + std::string(where));
        return false;
    }
    unexpected("'" + std::string(spelling(kind)) + "' " + std::string(where));
    return false;
}

bool Parser::atIdentifier() const {
    return at(TokenKind::identifier) && peek().name->keyword == Keyword::none;
}

// The address space that the next word names, if it names one.
AddressSpace Parser::addressSpaceWord() const {
    switch (at(TokenKind::identifier) ? peek().name->keyword : Keyword::none) {
    case Keyword::constantWord:
        return AddressSpace::constant;
    case Keyword::deviceWord:
        return AddressSpace::device;
    case Keyword::threadWord:
        return AddressSpace::thread;
    case Keyword::threadgroupWord:
        return AddressSpace::threadgroup;
    default:
        return AddressSpace::none;
    }
}

bool Parser::expectName(Name& name, Range& range, std::string_view what) {
    if (!atIdentifier()) {
        unexpected(what);
        return false;
    }
    range = peek().range();
    name = advance().name;
    return true;
}

// Leaves the construct that went wrong: behind the next semicolon at this level, or behind the
// block that ends it. With `stopAtBrace` a closing brace of the surrounding block stays.
void Parser::skipTo(bool stopAtBrace) {
    halfAngle_ = false;
    angleDepth_ = 0;
    uint32_t nesting = 0;
    while (!at(TokenKind::endOfFile)) {
        switch (peek().kind) {
        case TokenKind::leftBrace:
            ++nesting;
            break;
        case TokenKind::rightBrace:
            if (nesting == 0) {
                if (!stopAtBrace) {
                    advance();
                }
                return;
            }
            --nesting;
            if (nesting == 0) {
                advance();
                accept(TokenKind::semicolon);
                return;
            }
            break;
        case TokenKind::semicolon:
            if (nesting == 0) {
                advance();
                return;
            }
            break;
        default:
            break;
        }
        advance();
    }
}

void Parser::declare(Name name, ParserKind kind) {
    if (name == nullptr || name->parserKind == kind) {
        return;
    }
    shadowed_.push_back({name, name->parserKind});
    name->parserKind = kind;
}

void Parser::closeScope(size_t mark) {
    while (shadowed_.size() > mark) {
        shadowed_.back().name->parserKind = shadowed_.back().kind;
        shadowed_.pop_back();
    }
}

const Type* Parser::builtinTypeOf(Name name) const {
    if (!name->builtinTypeKnown) {
        name->builtinTypeKnown = true;
        name->builtinType = findBuiltinType(name->text);
    }
    return name->builtinType;
}

Range Parser::rangeFrom(const Token& first) const {
    const Token& last = tokens_[position_ > 0 ? position_ - 1 : 0];
    const uint32_t end = last.location.offset + last.length;
    return {first.location,
            end > first.location.offset ? end - first.location.offset : first.range().length};
}

ast::Decl* Parser::makeDecl(ast::DeclKind kind, Range range) {
    auto* decl = arena_.make<ast::Decl>();
    decl->kind = kind;
    decl->range = range;
    return decl;
}

} // namespace msl
