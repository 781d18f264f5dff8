// Tokens, as the lexer makes them, the preprocessor moves them and the parser reads them.
#pragma once

#include <cstdint>
#include <string_view>

#include "msl/lexer/name.h"
#include "msl/source/source.h"

namespace msl {

enum class TokenKind : uint8_t {
    endOfFile,
    identifier, // keywords too: see Name::keyword
    number,     // a preprocessing number, not yet checked
    character,
    string,
    unknown, // a character that no token starts with
    leftParen,
    rightParen,
    leftBrace,
    rightBrace,
    leftBracket,
    rightBracket,
    semicolon,
    comma,
    colon,
    colonColon,
    question,
    dot,
    ellipsis,
    arrow,
    plus,
    minus,
    star,
    slash,
    percent,
    plusPlus,
    minusMinus,
    ampersand,
    pipe,
    caret,
    tilde,
    exclamation,
    ampersandAmpersand,
    pipePipe,
    equal,
    plusEqual,
    minusEqual,
    starEqual,
    slashEqual,
    percentEqual,
    ampersandEqual,
    pipeEqual,
    caretEqual,
    shiftLeftEqual,
    shiftRightEqual,
    equalEqual,
    exclamationEqual,
    less,
    greater,
    lessEqual,
    greaterEqual,
    shiftLeft,
    shiftRight,
    hash,
    hashHash,
};

struct Token {
    static constexpr uint8_t kStartsLine = 1;
    static constexpr uint8_t kSpaceBefore = 2;
    static constexpr uint8_t kNoExpand = 4;  // met while its macro was being expanded
    static constexpr uint8_t kNotCalled = 8; // no parenthesis follows the macro's name here

    TokenKind kind = TokenKind::endOfFile;
    uint8_t flags = 0;
    uint32_t length = 0;
    Location location;
    union {
        Name name;
        const char* characters = nullptr;
    };

    bool is(TokenKind other) const { return kind == other; }
    bool is(Keyword word) const { return kind == TokenKind::identifier && name->keyword == word; }
    std::string_view text() const {
        return kind == TokenKind::identifier ? name->text : std::string_view(characters, length);
    }
    Range range() const { return {location, length == 0 ? 1 : length}; }
};

// The spelling of a punctuator, for messages.
std::string_view spelling(TokenKind kind);

// How strongly a binary operator binds, from 1; 0 for every other token. The same in expressions
// and in #if.
constexpr int binaryPrecedence(TokenKind kind) {
    switch (kind) {
    case TokenKind::pipePipe:
        return 1;
    case TokenKind::ampersandAmpersand:
        return 2;
    case TokenKind::pipe:
        return 3;
    case TokenKind::caret:
        return 4;
    case TokenKind::ampersand:
        return 5;
    case TokenKind::equalEqual:
    case TokenKind::exclamationEqual:
        return 6;
    case TokenKind::less:
    case TokenKind::greater:
    case TokenKind::lessEqual:
    case TokenKind::greaterEqual:
        return 7;
    case TokenKind::shiftLeft:
    case TokenKind::shiftRight:
        return 8;
    case TokenKind::plus:
    case TokenKind::minus:
        return 9;
    case TokenKind::star:
    case TokenKind::slash:
    case TokenKind::percent:
        return 10;
    default:
        return 0;
    }
}

} // namespace msl
