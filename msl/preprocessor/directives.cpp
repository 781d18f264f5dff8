#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "msl/preprocessor/preprocessor.h"

namespace msl {

// The tokens up to the end of the directive's line. The first token of the next line is kept for
// the lexer's next reader.
std::vector<Token> Preprocessor::restOfLine() {
    std::vector<Token> line;
    Lexer& lexer = *frames_.back().lexer;
    while (true) {
        Lexer ahead = lexer;
        const Token token = ahead.next();
        if (token.is(TokenKind::endOfFile) || (token.flags & Token::kStartsLine) != 0) {
            return line;
        }
        lexer.next();
        line.push_back(token);
    }
}

void Preprocessor::directive(const Token& hash) {
    const auto words = restOfLine();
    if (words.empty()) {
        return;
    }
    const Token& word = words.front();
    const std::vector<Token> line(words.begin() + 1, words.end());
    if (!word.is(TokenKind::identifier)) {
        error(word, "a directive is a word after the '#'");
        return;
    }
    const auto text = word.name->text;
    if (text == "define") {
        defineDirective(line);
    } else if (text == "undef") {
        undefDirective(line);
    } else if (text == "include" || text == "import") {
        includeDirective(word, line, text == "import");
    } else if (text == "if") {
        ifDirective(word, line);
    } else if (text == "ifdef" || text == "ifndef") {
        ifdefDirective(word, line, text == "ifdef");
    } else if (text == "else" || text == "elif") {
        elseDirective(word, line);
    } else if (text == "endif") {
        endifDirective(word);
    } else if (text == "error" || text == "warning") {
        const auto place = sources_.resolve(word.location);
        auto message = std::string(
            place.lineText.substr(std::min(place.lineText.size(), place.column - 1 + text.size())));
        message.erase(0, message.find_first_not_of(" \t"));
        if (text == "error") {
            error(word, "#error " + message);
        } else {
            diagnostics_.warning(word.range(), "#warning " + message);
        }
    } else if (text == "pragma") {
        if (!line.empty() && line.front().is(TokenKind::identifier) &&
            line.front().name->text == "once") {
            onceFiles_.push_back(frames_.back().lexer->file().name);
        }
    } else if (text != "line") {
        error(hash, "there is no directive '#" + std::string(text) + "'");
    }
}

void Preprocessor::defineDirective(const std::vector<Token>& line) {
    if (line.empty() || !line.front().is(TokenKind::identifier)) {
        if (!line.empty()) {
            error(line.front(), "#define needs a name");
        }
        return;
    }
    const Token& name = line.front();
    if (name.name == definedName_) {
        error(name, "'defined' cannot be a macro");
        return;
    }
    auto* macro = arena_.make<Macro>();
    macro->place = name.range();
    size_t i = 1;
    if (i < line.size() && line[i].is(TokenKind::leftParen) &&
        (line[i].flags & Token::kSpaceBefore) == 0) {
        macro->kind = Macro::Kind::function;
        std::vector<Name> parameters;
        ++i;
        bool closed = false;
        while (i < line.size() && !closed) {
            if (line[i].is(TokenKind::rightParen) && parameters.empty()) {
                closed = true;
                ++i;
                break;
            }
            if (line[i].is(TokenKind::ellipsis)) {
                parameters.push_back(variadicName_);
                macro->variadic = true;
            } else if (line[i].is(TokenKind::identifier) && !macro->variadic) {
                parameters.push_back(line[i].name);
            } else {
                break;
            }
            ++i;
            if (i < line.size() && line[i].is(TokenKind::rightParen)) {
                closed = true;
            } else if (i >= line.size() || !line[i].is(TokenKind::comma)) {
                break;
            }
            ++i;
        }
        if (!closed) {
            error(name, "the parameters of the macro '" + std::string(name.name->text) +
                            "' are not a list of names in parentheses");
            return;
        }
        macro->parameters = arena_.copy(parameters);
    }
    macro->body =
        arena_.copy(std::vector<Token>(line.begin() + static_cast<ptrdiff_t>(i), line.end()));
    if (!macro->body.empty() && (macro->body.front().is(TokenKind::hashHash) ||
                                 macro->body.back().is(TokenKind::hashHash))) {
        error(name, "'##' needs a token on either side");
        return;
    }
    name.name->macroKnown = true;
    name.name->macro = macro;
}

void Preprocessor::undefDirective(const std::vector<Token>& line) {
    if (line.empty() || !line.front().is(TokenKind::identifier)) {
        if (!line.empty()) {
            error(line.front(), "#undef needs a name");
        }
        return;
    }
    line.front().name->macroKnown = true;
    line.front().name->macro = nullptr;
}

bool Preprocessor::isBuiltinHeader(std::string_view path) const {
    return path.starts_with("metal_") || path.starts_with("simd/") ||
           path == "TargetConditionals.h";
}

void Preprocessor::includeDirective(const Token& word, const std::vector<Token>& line, bool once) {
    auto tokens = line;
    if (!tokens.empty() && tokens.front().is(TokenKind::identifier)) {
        tokens = expandAll(tokens);
    }
    if (tokens.empty()) {
        error(word, "#include needs a file name");
        return;
    }
    if (tokens.front().is(TokenKind::string)) {
        const auto text = tokens.front().text();
        const std::string path(text.substr(1, text.size() - 2));
        if (!isBuiltinHeader(path)) {
            quotedInclude(tokens.front(), path, once);
        }
        return;
    }
    if (!tokens.front().is(TokenKind::less)) {
        error(tokens.front(), "#include needs a file name in quotation marks or angle brackets");
        return;
    }
    std::string path;
    for (size_t i = 1; i < tokens.size() && !tokens[i].is(TokenKind::greater); ++i) {
        path += tokens[i].is(TokenKind::identifier)
                    ? tokens[i].text()
                    : std::string_view(tokens[i].characters, tokens[i].length);
    }
    if (isBuiltinHeader(path)) {
        return;
    }
    if (!quotedInclude(tokens.front(), path, once)) {
        return;
    }
}

std::optional<std::string> Preprocessor::findFile(const std::string& path) const {
    std::error_code failure;
    for (const auto& folder : includeFolders_) {
        auto candidate = (std::filesystem::path(folder) / path).string();
        if (std::filesystem::is_regular_file(candidate, failure)) {
            return candidate;
        }
    }
    return std::nullopt;
}

bool Preprocessor::quotedInclude(const Token& at, const std::string& path, bool once) {
    const auto depth = std::count_if(frames_.begin(), frames_.end(),
                                     [](const Frame& frame) { return frame.lexer.has_value(); });
    if (depth >= static_cast<ptrdiff_t>(kMaxIncludeDepth)) {
        error(at,
              "files include each other more than " + std::to_string(kMaxIncludeDepth) + " deep");
        stopped_ = true;
        return false;
    }
    const auto found = findFile(path);
    if (!found) {
        error(at, "the file '" + path + "' is not found");
        return false;
    }
    if (std::find(onceFiles_.begin(), onceFiles_.end(), *found) != onceFiles_.end()) {
        return true;
    }
    if (once) {
        onceFiles_.push_back(*found);
    }
    std::ifstream stream(*found, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    auto content = std::move(text).str();
    if (!stream || content.size() + sources_.totalBytes() > kMaxSourceBytes) {
        error(at, "the file '" + path + "' cannot be read, or the sources together exceed " +
                      std::to_string(kMaxSourceBytes) + " bytes");
        return false;
    }
    const auto& file = sources_.addOwned(*found, std::move(content));
    Frame frame;
    frame.lexer.emplace(file, names_, arena_, diagnostics_);
    frame.conditionBase = conditions_.size();
    frames_.push_back(std::move(frame));
    return true;
}

void Preprocessor::pushCondition(const Token& word, bool taken) {
    if (conditions_.size() >= kMaxConditionDepth) {
        error(word,
              "conditions are nested more than " + std::to_string(kMaxConditionDepth) + " deep");
        stopped_ = true;
        return;
    }
    conditions_.push_back({word.range(), taken, taken, false});
    if (!taken) {
        skipSection();
    }
}

void Preprocessor::ifDirective(const Token& word, const std::vector<Token>& line) {
    pushCondition(word, evaluate(word, line));
}

void Preprocessor::ifdefDirective(const Token& word, const std::vector<Token>& line, bool wanted) {
    if (line.empty() || !line.front().is(TokenKind::identifier)) {
        error(word, "#" + std::string(word.name->text) + " needs a name");
        pushCondition(word, false);
        return;
    }
    pushCondition(word, (macroOf(line.front().name) != nullptr) == wanted);
}

// Reached at the end of a section that was taken: the sections after it are not.
void Preprocessor::elseDirective(const Token& word, const std::vector<Token>& line) {
    static_cast<void>(line);
    if (conditions_.size() <= frames_.back().conditionBase) {
        error(word, "there is no condition for this #" + std::string(word.name->text));
        return;
    }
    if (conditions_.back().elseSeen) {
        error(word, "this condition has had its #else already");
    }
    conditions_.back().elseSeen = word.name->text == "else";
    conditions_.back().taken = false;
    skipSection();
}

void Preprocessor::endifDirective(const Token& word) {
    if (conditions_.size() <= frames_.back().conditionBase) {
        error(word, "there is no condition for this #endif");
        return;
    }
    conditions_.pop_back();
}

// Reads past sections that are not taken, up to the one that is or to the end of the condition.
void Preprocessor::skipSection() {
    Lexer& lexer = *frames_.back().lexer;
    uint32_t nested = 0;
    while (true) {
        const Token token = lexer.next();
        if (token.is(TokenKind::endOfFile)) {
            return;
        }
        if (!token.is(TokenKind::hash) || (token.flags & Token::kStartsLine) == 0) {
            continue;
        }
        const auto words = restOfLine();
        if (words.empty() || !words.front().is(TokenKind::identifier)) {
            continue;
        }
        const Token& word = words.front();
        const auto text = word.name->text;
        if (text == "if" || text == "ifdef" || text == "ifndef") {
            ++nested;
        } else if (text == "endif") {
            if (nested == 0) {
                conditions_.pop_back();
                return;
            }
            --nested;
        } else if (nested == 0 && (text == "else" || text == "elif")) {
            auto& condition = conditions_.back();
            if (condition.elseSeen) {
                error(word, "this condition has had its #else already");
            }
            condition.elseSeen = text == "else";
            if (!condition.anyTaken &&
                (text == "else" || evaluate(word, {words.begin() + 1, words.end()}))) {
                condition.taken = condition.anyTaken = true;
                return;
            }
        }
    }
}

bool Preprocessor::evaluate(const Token& word, const std::vector<Token>& line) {
    std::vector<Token> tokens;
    const auto number = [&](bool value, const Token& at) {
        Token token = at;
        token.kind = TokenKind::number;
        token.characters = value ? "1" : "0";
        token.length = 1;
        return token;
    };
    for (size_t i = 0; i < line.size(); ++i) {
        const bool isDefined = line[i].is(TokenKind::identifier) && line[i].name == definedName_;
        const bool isHasInclude =
            line[i].is(TokenKind::identifier) && line[i].name == hasIncludeName_;
        if (!isDefined && !isHasInclude) {
            tokens.push_back(line[i]);
            continue;
        }
        const Token at = line[i];
        const bool paren = i + 1 < line.size() && line[i + 1].is(TokenKind::leftParen);
        i += paren ? 2 : 1;
        if (isDefined) {
            if (i >= line.size() || !line[i].is(TokenKind::identifier)) {
                error(at, "'defined' needs a name");
                return false;
            }
            const bool known = macroOf(line[i].name) != nullptr || line[i].name == hasIncludeName_;
            tokens.push_back(number(known, at));
            i += paren ? 1 : 0;
            continue;
        }
        std::string path;
        const bool quoted = i < line.size() && line[i].is(TokenKind::string);
        while (i < line.size() && !line[i].is(TokenKind::rightParen)) {
            path += line[i].text();
            ++i;
        }
        if (path.size() < 2) {
            error(at, "'__has_include' needs a file name");
            return false;
        }
        path = path.substr(1, path.size() - 2);
        tokens.push_back(number(isBuiltinHeader(path) || (quoted && findFile(path)), at));
    }
    return evaluateCondition(expandAll(std::move(tokens)), word, diagnostics_).value_or(false);
}

} // namespace msl
