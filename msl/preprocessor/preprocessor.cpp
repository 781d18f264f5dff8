#include "msl/preprocessor/preprocessor.h"

#include <algorithm>

namespace msl {

Preprocessor::Preprocessor(SourceManager& sources, NameTable& names, Arena& arena,
                           Diagnostics& diagnostics, const std::vector<std::string>& includeFolders)
    : sources_(sources), names_(names), arena_(arena), diagnostics_(diagnostics),
      includeFolders_(includeFolders), definedName_(names.intern("defined")),
      hasIncludeName_(names.intern("__has_include")), variadicName_(names.intern("__VA_ARGS__")) {}

std::vector<Token> Preprocessor::run(const SourceManager::File& file) {
    std::vector<Token> output;
    output.reserve(file.text.size() / 4 + 16);
    Frame frame;
    frame.lexer.emplace(file, names_, arena_, diagnostics_);
    frames_.push_back(std::move(frame));
    while (true) {
        const Token token = nextRaw();
        if (token.is(TokenKind::endOfFile)) {
            output.push_back(token);
            break;
        }
        if (token.is(TokenKind::identifier) && expandIdentifier(token)) {
            continue;
        }
        if (output.size() >= kMaxTokens) {
            error(token, "the source has more than " + std::to_string(kMaxTokens) +
                             " tokens after preprocessing");
            Token end;
            end.location = token.location;
            output.push_back(end);
            stopped_ = true;
            break;
        }
        output.push_back(token);
    }
    return output;
}

Preprocessor::Frame* Preprocessor::fileFrame() {
    for (auto frame = frames_.rbegin(); frame != frames_.rend(); ++frame) {
        if (frame->lexer) {
            return &*frame;
        }
    }
    return nullptr;
}

Token Preprocessor::nextRaw() {
    if (pending_) {
        const Token token = *pending_;
        pending_.reset();
        return token;
    }
    while (true) {
        if (frames_.empty() || stopped_ || diagnostics_.exhausted()) {
            return Token{};
        }
        Frame& frame = frames_.back();
        if (!frame.lexer) {
            if (frame.position < frame.tokens.size()) {
                return frame.tokens[frame.position++];
            }
            if (frame.macro != nullptr) {
                frame.macro->disabled = false;
            }
            frames_.pop_back();
            continue;
        }
        const Token token = frame.lexer->next();
        if (token.is(TokenKind::hash) && (token.flags & Token::kStartsLine) != 0) {
            directive(token);
            continue;
        }
        if (!token.is(TokenKind::endOfFile)) {
            return token;
        }
        while (conditions_.size() > frame.conditionBase) {
            diagnostics_.error(conditions_.back().place, "this condition is never ended by #endif");
            conditions_.pop_back();
        }
        if (frames_.size() == 1) {
            return token;
        }
        frames_.pop_back();
    }
}

Macro* Preprocessor::macroOf(Name name) {
    if (name->macroKnown) {
        return name->macro;
    }
    name->macroKnown = true;
    const auto* predefined = findPredefinedMacro(name->text, name->hash);
    if (predefined == nullptr) {
        return nullptr;
    }
    auto* macro = arena_.make<Macro>();
    macro->kind = predefined->kind;
    if (macro->kind == Macro::Kind::function) {
        // Its argument says nothing that matters here.
        macro->parameters = arena_.copy(std::vector<Name>{names_.intern("__argument")});
    }
    if (!predefined->body.empty()) {
        const SourceManager::File file{std::string(), std::string(), predefined->body, 0};
        Lexer lexer(file, names_, arena_, diagnostics_);
        std::vector<Token> body;
        for (Token token = lexer.next(); !token.is(TokenKind::endOfFile); token = lexer.next()) {
            body.push_back(token);
        }
        macro->body = arena_.copy(body);
    }
    name->macro = macro;
    return macro;
}

bool Preprocessor::count(size_t tokens, const Token& at) {
    moved_ += tokens;
    if (moved_ <= kMaxExpandedTokens) {
        return true;
    }
    if (!stopped_) {
        error(at,
              "macro expansion makes more than " + std::to_string(kMaxExpandedTokens) + " tokens");
    }
    stopped_ = true;
    return false;
}

// True where the token was replaced: its replacement is read next.
bool Preprocessor::expandIdentifier(const Token& token) {
    Macro* macro = macroOf(token.name);
    if (macro == nullptr || (token.flags & (Token::kNoExpand | Token::kNotCalled)) != 0) {
        return false;
    }
    if (macro->disabled) {
        Token painted = token;
        painted.flags |= Token::kNoExpand;
        // Read again at once, and then passed on: the flag stays with the token wherever it goes.
        pending_ = painted;
        return true;
    }
    if (macro->kind == Macro::Kind::line || macro->kind == Macro::Kind::file ||
        macro->kind == Macro::Kind::counter) {
        expandBuiltin(token, *macro);
        return true;
    }
    if (frames_.size() > kMaxMacroDepth) {
        error(token, "macros are nested more than " + std::to_string(kMaxMacroDepth) + " deep");
        stopped_ = true;
        return true;
    }
    std::vector<Token> body;
    if (macro->kind == Macro::Kind::function) {
        const Token open = nextRaw();
        if (!open.is(TokenKind::leftParen)) {
            // Not a call: the name stands for itself. What was read is read again.
            if (!open.is(TokenKind::endOfFile)) {
                Frame rest;
                Token seen = token;
                seen.flags |= Token::kNotCalled;
                rest.tokens = {seen, open};
                frames_.push_back(std::move(rest));
                return true;
            }
            Token seen = token;
            seen.flags |= Token::kNotCalled;
            pending_ = seen;
            return true;
        }
        Arguments arguments;
        if (!collectArguments(token, *macro, arguments)) {
            return true;
        }
        body = substitute(token, *macro, arguments);
    } else {
        Arguments none;
        body = substitute(token, *macro, none);
    }
    if (!count(body.size() + 1, token)) {
        return true;
    }
    if (!body.empty()) {
        body.front().flags = static_cast<uint8_t>(
            (body.front().flags & ~(Token::kSpaceBefore | Token::kStartsLine)) |
            (token.flags & Token::kSpaceBefore));
    }
    if (macro->place.begin.offset != 0) {
        diagnostics_.noteExpansion(token.location, macro->place);
    }
    macro->disabled = true;
    Frame frame;
    frame.tokens = std::move(body);
    frame.macro = macro;
    frames_.push_back(std::move(frame));
    return true;
}

void Preprocessor::expandBuiltin(const Token& token, const Macro& macro) {
    Token result = token;
    std::string text;
    if (macro.kind == Macro::Kind::file) {
        const auto* frame = fileFrame();
        text = "\"" + (frame != nullptr ? frame->lexer->file().name : std::string()) + "\"";
        result.kind = TokenKind::string;
    } else {
        text = macro.kind == Macro::Kind::line
                   ? std::to_string(sources_.resolve(token.location).line)
                   : std::to_string(counter_++);
        result.kind = TokenKind::number;
    }
    result.characters = arena_.copy(text).data();
    result.length = static_cast<uint32_t>(text.size());
    Frame frame;
    frame.tokens.push_back(result);
    frames_.push_back(std::move(frame));
}

bool Preprocessor::collectArguments(const Token& name, const Macro& macro, Arguments& arguments) {
    std::vector<Token> current;
    size_t nesting = 0;
    while (true) {
        const Token token = nextRaw();
        if (token.is(TokenKind::endOfFile)) {
            if (!stopped_) {
                error(name, "the arguments of the macro '" + std::string(name.name->text) +
                                "' are never closed");
            }
            stopped_ = true;
            return false;
        }
        if (!count(1, name)) {
            return false;
        }
        if (token.is(TokenKind::leftParen)) {
            ++nesting;
        } else if (token.is(TokenKind::rightParen)) {
            if (nesting == 0) {
                break;
            }
            --nesting;
        } else if (token.is(TokenKind::comma) && nesting == 0 &&
                   !(macro.variadic && arguments.values.size() + 1 == macro.parameters.size())) {
            arguments.values.push_back(std::move(current));
            current.clear();
            continue;
        }
        // A name met while its own macro is expanded never becomes a macro again.
        Token kept = token;
        if (token.is(TokenKind::identifier) && token.name->macro != nullptr &&
            token.name->macro->disabled) {
            kept.flags |= Token::kNoExpand;
        }
        current.push_back(kept);
    }
    if (!(arguments.values.empty() && current.empty() && macro.parameters.empty())) {
        arguments.values.push_back(std::move(current));
    }
    if (macro.variadic && arguments.values.size() + 1 == macro.parameters.size()) {
        arguments.values.emplace_back();
    }
    if (arguments.values.size() != macro.parameters.size()) {
        error(name, "the macro '" + std::string(name.name->text) + "' takes " +
                        std::to_string(macro.parameters.size()) + " arguments, not " +
                        std::to_string(arguments.values.size()));
        diagnostics_.note(macro.place, "the macro is defined here");
        return false;
    }
    return true;
}

std::vector<Token> Preprocessor::substitute(const Token& name, const Macro& macro,
                                            Arguments& arguments) {
    std::vector<Token> result;
    std::vector<std::optional<std::vector<Token>>> expanded(arguments.values.size());
    const auto parameterIndex = [&](const Token& token) -> size_t {
        if (token.is(TokenKind::identifier)) {
            for (size_t i = 0; i < macro.parameters.size(); ++i) {
                if (macro.parameters[i] == token.name) {
                    return i;
                }
            }
        }
        return arguments.values.size();
    };
    const auto placed = [&](Token token) {
        token.location = name.location;
        if (!token.is(TokenKind::number) && !token.is(TokenKind::string) &&
            !token.is(TokenKind::character) && !token.is(TokenKind::unknown)) {
            token.length = static_cast<uint32_t>(name.name->text.size());
        }
        return token;
    };
    for (size_t i = 0; i < macro.body.size(); ++i) {
        const Token& token = macro.body[i];
        const bool isFunction = macro.kind == Macro::Kind::function;
        if (isFunction && token.is(TokenKind::hash) && i + 1 < macro.body.size()) {
            const size_t index = parameterIndex(macro.body[i + 1]);
            if (index < arguments.values.size()) {
                result.push_back(stringize(arguments.values[index], name));
                ++i;
                continue;
            }
        }
        const bool pasteNext =
            i + 1 < macro.body.size() && macro.body[i + 1].is(TokenKind::hashHash);
        if (token.is(TokenKind::hashHash) && i > 0 && i + 1 < macro.body.size()) {
            ++i;
            const size_t index = parameterIndex(macro.body[i]);
            std::vector<Token> right;
            if (index < arguments.values.size()) {
                right = arguments.values[index];
                // ", ## __VA_ARGS__" drops the comma where there are no further arguments.
                if (macro.variadic && index + 1 == macro.parameters.size() && !result.empty() &&
                    result.back().is(TokenKind::comma)) {
                    if (right.empty()) {
                        result.pop_back();
                    }
                    result.insert(result.end(), right.begin(), right.end());
                    continue;
                }
            } else {
                right.push_back(placed(macro.body[i]));
            }
            if (!right.empty() && !result.empty() && paste(result.back(), right.front(), name)) {
                result.insert(result.end(), right.begin() + 1, right.end());
            } else {
                result.insert(result.end(), right.begin(), right.end());
            }
            continue;
        }
        const size_t index = parameterIndex(token);
        if (index >= arguments.values.size()) {
            result.push_back(placed(token));
            continue;
        }
        if (pasteNext) {
            const auto& raw = arguments.values[index];
            result.insert(result.end(), raw.begin(), raw.end());
            if (raw.empty() && i + 2 < macro.body.size()) {
                // Nothing to paste to: the right side stands alone.
                ++i;
            }
        } else {
            if (!expanded[index]) {
                expanded[index] = expandAll(arguments.values[index]);
            }
            const size_t at = result.size();
            result.insert(result.end(), expanded[index]->begin(), expanded[index]->end());
            if (result.size() > at && (token.flags & Token::kSpaceBefore) != 0) {
                result[at].flags |= Token::kSpaceBefore;
            }
        }
        if (!count(result.size() > kMaxExpandedTokens ? result.size() : 0, name)) {
            return {};
        }
    }
    return result;
}

// The tokens with every macro in them expanded, as if they were the rest of the source.
std::vector<Token> Preprocessor::expandAll(std::vector<Token> tokens) {
    if (!count(tokens.size(), tokens.empty() ? Token{} : tokens.front()) || stopped_) {
        return {};
    }
    if (std::none_of(tokens.begin(), tokens.end(), [&](const Token& token) {
            return token.is(TokenKind::identifier) && macroOf(token.name) != nullptr;
        })) {
        return tokens;
    }
    if (depth_ >= kMaxMacroDepth) {
        error(tokens.front(),
              "macros are nested more than " + std::to_string(kMaxMacroDepth) + " deep");
        stopped_ = true;
        return {};
    }
    ++depth_;
    std::vector<Frame> outer;
    outer.swap(frames_);
    const auto outerPending = pending_;
    pending_.reset();
    Frame frame;
    frame.tokens = std::move(tokens);
    frames_.push_back(std::move(frame));
    std::vector<Token> output;
    while (true) {
        const Token token = nextRaw();
        if (token.is(TokenKind::endOfFile)) {
            break;
        }
        if (token.is(TokenKind::identifier) && expandIdentifier(token)) {
            continue;
        }
        if (!count(1, token)) {
            break;
        }
        output.push_back(token);
        // As an argument the name may come to stand before a parenthesis yet.
        output.back().flags &= static_cast<uint8_t>(~Token::kNotCalled);
    }
    for (auto& left : frames_) {
        if (left.macro != nullptr) {
            left.macro->disabled = false;
        }
    }
    frames_.swap(outer);
    pending_ = outerPending;
    --depth_;
    return output;
}

Token Preprocessor::stringize(const std::vector<Token>& tokens, const Token& at) {
    std::string text = "\"";
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (i > 0 && (tokens[i].flags & (Token::kSpaceBefore | Token::kStartsLine)) != 0) {
            text += ' ';
        }
        const bool literal = tokens[i].is(TokenKind::string) || tokens[i].is(TokenKind::character);
        for (const char c : tokens[i].is(TokenKind::identifier) || tokens[i].characters != nullptr
                                ? tokens[i].text()
                                : spelling(tokens[i].kind)) {
            if (literal && (c == '"' || c == '\\')) {
                text += '\\';
            }
            text += c;
        }
    }
    text += '"';
    count(text.size() / 8, at);
    Token result;
    result.kind = TokenKind::string;
    result.location = at.location;
    result.characters = arena_.copy(text).data();
    result.length = static_cast<uint32_t>(text.size());
    return result;
}

bool Preprocessor::paste(Token& left, const Token& right, const Token& at) {
    std::string text(left.is(TokenKind::identifier) ? left.text() : std::string_view());
    if (!left.is(TokenKind::identifier)) {
        text = left.is(TokenKind::number) ? left.text() : spelling(left.kind);
    }
    text += right.is(TokenKind::identifier) || right.is(TokenKind::number) ? right.text()
                                                                           : spelling(right.kind);
    if (!count(text.size() / 8, at)) {
        return false;
    }
    const SourceManager::File file{std::string(), std::string(), arena_.copy(text), 0};
    Lexer lexer(file, names_, arena_, diagnostics_);
    Token pasted = lexer.next();
    if (!lexer.next().is(TokenKind::endOfFile) || pasted.is(TokenKind::unknown)) {
        error(at, "pasting gives '" + text + "', which is no token");
        return false;
    }
    pasted.flags = left.flags;
    pasted.location = at.location;
    left = pasted;
    return true;
}

} // namespace msl
