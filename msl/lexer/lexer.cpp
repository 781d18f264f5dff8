#include "msl/lexer/lexer.h"

#include <array>
#include <string>

namespace msl {
namespace {

enum CharacterClass : uint8_t { kOther = 0, kLetter = 1, kDigit = 2, kSpace = 4 };

constexpr auto kClasses = [] {
    std::array<uint8_t, 256> table{};
    for (int c = 'a'; c <= 'z'; ++c) {
        table[static_cast<size_t>(c)] = kLetter;
        table[static_cast<size_t>(c - 'a' + 'A')] = kLetter;
    }
    for (int c = '0'; c <= '9'; ++c) {
        table[static_cast<size_t>(c)] = kDigit;
    }
    table['_'] = kLetter;
    for (const char c : {' ', '\t', '\r', '\v', '\f', '\n'}) {
        table[static_cast<size_t>(c)] = kSpace;
    }
    return table;
}();

uint8_t classOf(char c) { return kClasses[static_cast<uint8_t>(c)]; }

struct Punctuator {
    std::string_view text;
    TokenKind kind;
};

// Longer spellings stand before their beginnings.
constexpr Punctuator kPunctuators[] = {
    {"...", TokenKind::ellipsis},
    {"<<=", TokenKind::shiftLeftEqual},
    {">>=", TokenKind::shiftRightEqual},
    {"::", TokenKind::colonColon},
    {"->", TokenKind::arrow},
    {"++", TokenKind::plusPlus},
    {"--", TokenKind::minusMinus},
    {"&&", TokenKind::ampersandAmpersand},
    {"||", TokenKind::pipePipe},
    {"+=", TokenKind::plusEqual},
    {"-=", TokenKind::minusEqual},
    {"*=", TokenKind::starEqual},
    {"/=", TokenKind::slashEqual},
    {"%=", TokenKind::percentEqual},
    {"&=", TokenKind::ampersandEqual},
    {"|=", TokenKind::pipeEqual},
    {"^=", TokenKind::caretEqual},
    {"==", TokenKind::equalEqual},
    {"!=", TokenKind::exclamationEqual},
    {"<=", TokenKind::lessEqual},
    {">=", TokenKind::greaterEqual},
    {"<<", TokenKind::shiftLeft},
    {">>", TokenKind::shiftRight},
    {"##", TokenKind::hashHash},
    {"(", TokenKind::leftParen},
    {")", TokenKind::rightParen},
    {"{", TokenKind::leftBrace},
    {"}", TokenKind::rightBrace},
    {"[", TokenKind::leftBracket},
    {"]", TokenKind::rightBracket},
    {";", TokenKind::semicolon},
    {",", TokenKind::comma},
    {":", TokenKind::colon},
    {"?", TokenKind::question},
    {".", TokenKind::dot},
    {"+", TokenKind::plus},
    {"-", TokenKind::minus},
    {"*", TokenKind::star},
    {"/", TokenKind::slash},
    {"%", TokenKind::percent},
    {"&", TokenKind::ampersand},
    {"|", TokenKind::pipe},
    {"^", TokenKind::caret},
    {"~", TokenKind::tilde},
    {"!", TokenKind::exclamation},
    {"=", TokenKind::equal},
    {"<", TokenKind::less},
    {">", TokenKind::greater},
    {"#", TokenKind::hash},
};

// For each first character, the range of kPunctuators' entries is short enough to walk; this table
// tells where the first one stands, so that most lookups compare once or twice.
constexpr auto kFirstPunctuator = [] {
    std::array<uint8_t, 128> table{};
    for (auto& entry : table) {
        entry = static_cast<uint8_t>(std::size(kPunctuators));
    }
    for (size_t i = std::size(kPunctuators); i-- > 0;) {
        table[static_cast<size_t>(kPunctuators[i].text[0])] = static_cast<uint8_t>(i);
    }
    return table;
}();

} // namespace

std::string_view spelling(TokenKind kind) {
    for (const auto& punctuator : kPunctuators) {
        if (punctuator.kind == kind) {
            return punctuator.text;
        }
    }
    return kind == TokenKind::endOfFile ? "the end of the file" : "a word";
}

Lexer::Lexer(const SourceManager::File& file, NameTable& names, Arena& arena,
             Diagnostics& diagnostics)
    : file_(&file), names_(names), arena_(arena), diagnostics_(diagnostics),
      position_(file.text.data()), end_(file.text.data() + file.text.size()) {
    if (file.text.starts_with("\xEF\xBB\xBF")) {
        position_ += 3;
    }
}

Location Lexer::locationOf(const char* position) const {
    return {file_->base + static_cast<uint32_t>(position - file_->text.data())};
}

bool Lexer::atSplice() const {
    return position_ + 1 < end_ && *position_ == '\\' &&
           (position_[1] == '\n' ||
            (position_[1] == '\r' && position_ + 2 < end_ && position_[2] == '\n'));
}

bool Lexer::skipSplice() {
    if (!atSplice()) {
        return false;
    }
    position_ += position_[1] == '\n' ? 2 : 3;
    ++line_;
    return true;
}

void Lexer::skipBlockComment() {
    const char* begin = position_;
    position_ += 2;
    while (position_ < end_) {
        if (*position_ == '*' && position_ + 1 < end_ && position_[1] == '/') {
            position_ += 2;
            return;
        }
        if (*position_ == '\n') {
            ++line_;
        }
        ++position_;
    }
    diagnostics_.error({locationOf(begin), 2}, "this comment is never closed");
}

void Lexer::skipLineComment() {
    while (position_ < end_ && *position_ != '\n') {
        if (!skipSplice()) {
            ++position_;
        }
    }
}

void Lexer::skipSpace(uint8_t& flags) {
    while (position_ < end_) {
        const char c = *position_;
        if (c == '\n') {
            ++line_;
            lineStart_ = true;
            ++position_;
        } else if ((classOf(c) & kSpace) != 0) {
            flags |= Token::kSpaceBefore;
            ++position_;
        } else if (c == '/' && position_ + 1 < end_ && position_[1] == '/') {
            skipLineComment();
            flags |= Token::kSpaceBefore;
        } else if (c == '/' && position_ + 1 < end_ && position_[1] == '*') {
            skipBlockComment();
            flags |= Token::kSpaceBefore;
        } else if (!skipSplice()) {
            break;
        }
    }
    if (lineStart_) {
        flags |= Token::kStartsLine;
    }
}

Token Lexer::finish(TokenKind kind, uint8_t flags, const char* begin) {
    Token token;
    token.kind = kind;
    token.flags = flags;
    token.length = static_cast<uint32_t>(position_ - begin);
    token.location = locationOf(begin);
    token.characters = begin;
    return token;
}

Token Lexer::next() {
    uint8_t flags = 0;
    skipSpace(flags);
    tokenLine_ = line_;
    if (position_ >= end_) {
        return finish(TokenKind::endOfFile, static_cast<uint8_t>(flags | Token::kStartsLine),
                      position_);
    }
    lineStart_ = false;
    const char c = *position_;
    if ((classOf(c) & kLetter) != 0) {
        return identifier(flags);
    }
    if ((classOf(c) & kDigit) != 0 ||
        (c == '.' && position_ + 1 < end_ && (classOf(position_[1]) & kDigit) != 0)) {
        return number(flags);
    }
    if (c == '"' || c == '\'') {
        return quoted(flags, c);
    }
    return punctuator(flags);
}

Token Lexer::identifier(uint8_t flags) {
    const char* begin = position_;
    uint32_t hash = kNameHashSeed;
    while (position_ < end_ && (classOf(*position_) & (kLetter | kDigit)) != 0) {
        hash = nameHashStep(hash, *position_);
        ++position_;
    }
    if (position_ < end_ && *position_ == '\\' && atSplice()) {
        return splicedWord(TokenKind::identifier, flags, begin);
    }
    Token token = finish(TokenKind::identifier, flags, begin);
    token.name = names_.intern({begin, token.length}, hash);
    if (token.name->keyword >= Keyword::andWord) {
        static constexpr TokenKind kOperators[] = {TokenKind::ampersandAmpersand,
                                                   TokenKind::ampersandEqual,
                                                   TokenKind::ampersand,
                                                   TokenKind::pipe,
                                                   TokenKind::tilde,
                                                   TokenKind::exclamation,
                                                   TokenKind::exclamationEqual,
                                                   TokenKind::pipePipe,
                                                   TokenKind::pipeEqual,
                                                   TokenKind::caret,
                                                   TokenKind::caretEqual};
        token.kind = kOperators[static_cast<size_t>(token.name->keyword) -
                                static_cast<size_t>(Keyword::andWord)];
    }
    return token;
}

// A word or number that a spliced line cuts in two: its text is put together in the arena.
Token Lexer::splicedWord(TokenKind kind, uint8_t flags, const char* begin) {
    std::string text(begin, position_);
    while (position_ < end_) {
        if (skipSplice()) {
            continue;
        }
        const char c = *position_;
        const bool sign = (c == '+' || c == '-') && kind == TokenKind::number && !text.empty() &&
                          (text.back() == 'e' || text.back() == 'E');
        if ((classOf(c) & (kLetter | kDigit)) == 0 && !sign &&
            !(kind == TokenKind::number && c == '.')) {
            break;
        }
        text += c;
        ++position_;
    }
    Token token = finish(kind, flags, begin);
    token.length = static_cast<uint32_t>(text.size());
    if (kind == TokenKind::identifier) {
        token.name = names_.intern(text);
    } else {
        token.characters = arena_.copy(text).data();
    }
    return token;
}

Token Lexer::number(uint8_t flags) {
    const char* begin = position_;
    while (position_ < end_) {
        const char c = *position_;
        const bool separator =
            c == '\'' && position_ + 1 < end_ && (classOf(position_[1]) & (kLetter | kDigit)) != 0;
        if ((classOf(c) & (kLetter | kDigit)) != 0 || c == '.' || separator) {
            ++position_;
        } else if ((c == '+' || c == '-') && position_ > begin &&
                   (position_[-1] == 'e' || position_[-1] == 'E' || position_[-1] == 'p' ||
                    position_[-1] == 'P') &&
                   !((position_[-1] == 'e' || position_[-1] == 'E') && begin[0] == '0' &&
                     (begin[1] == 'x' || begin[1] == 'X'))) {
            ++position_;
        } else {
            break;
        }
    }
    if (position_ < end_ && *position_ == '\\' && atSplice()) {
        return splicedWord(TokenKind::number, flags, begin);
    }
    return finish(TokenKind::number, flags, begin);
}

Token Lexer::quoted(uint8_t flags, char quote) {
    const char* begin = position_;
    ++position_;
    while (position_ < end_ && *position_ != quote && *position_ != '\n') {
        position_ += *position_ == '\\' && position_ + 1 < end_ && position_[1] != '\n' ? 2 : 1;
    }
    const bool closed = position_ < end_ && *position_ == quote;
    if (closed) {
        ++position_;
    }
    // An apostrophe in a skipped section or an #error text is no literal, so an open one is left
    // to those who read it.
    if (!closed) {
        return finish(TokenKind::unknown, flags, begin);
    }
    return finish(quote == '"' ? TokenKind::string : TokenKind::character, flags, begin);
}

Token Lexer::punctuator(uint8_t flags) {
    const char* begin = position_;
    const auto first = static_cast<uint8_t>(*begin);
    if (first < kFirstPunctuator.size()) {
        const std::string_view rest(begin, static_cast<size_t>(end_ - begin));
        for (size_t i = kFirstPunctuator[first]; i < std::size(kPunctuators); ++i) {
            if (rest.starts_with(kPunctuators[i].text)) {
                position_ += kPunctuators[i].text.size();
                return finish(kPunctuators[i].kind, flags, begin);
            }
        }
    }
    // The bytes of one UTF-8 character stay together.
    ++position_;
    while (position_ < end_ && (static_cast<uint8_t>(*position_) & 0xC0U) == 0x80U) {
        ++position_;
    }
    return finish(TokenKind::unknown, flags, begin);
}

} // namespace msl
