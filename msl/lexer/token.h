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
    static constexpr uint8_t kNoExpand = 4; // met while its macro was being expanded

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

} // namespace msl
