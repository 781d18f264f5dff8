// Cuts one file into tokens. Comments and white space vanish into the tokens' flags; spliced lines
// are joined. What no token starts with becomes an `unknown` token; an unterminated comment or
// literal is reported here.
#pragma once

#include "msl/lexer/token.h"

namespace msl {

class Lexer {
  public:
    Lexer(const SourceManager::File& file, NameTable& names, Arena& arena,
          Diagnostics& diagnostics);

    // After the last token, endOfFile for ever. The lexer never goes back.
    Token next();
    // The line of the token last given, from 1.
    uint32_t line() const { return tokenLine_; }
    const SourceManager::File& file() const { return *file_; }

  private:
    void skipSpace(uint8_t& flags);
    bool skipSplice();
    void skipBlockComment();
    void skipLineComment();
    Token identifier(uint8_t flags);
    Token number(uint8_t flags);
    Token quoted(uint8_t flags, char quote);
    Token punctuator(uint8_t flags);
    Token finish(TokenKind kind, uint8_t flags, const char* begin);
    Token splicedWord(TokenKind kind, uint8_t flags, const char* begin);
    Location locationOf(const char* position) const;
    bool atSplice() const;

    const SourceManager::File* file_;
    NameTable& names_;
    Arena& arena_;
    Diagnostics& diagnostics_;
    const char* position_;
    const char* end_;
    uint32_t line_ = 1;
    uint32_t tokenLine_ = 1;
    bool lineStart_ = true;
};

} // namespace msl
