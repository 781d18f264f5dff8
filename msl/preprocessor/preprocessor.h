// Runs directives and expands macros: one file in, the tokens that the parser sees out.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "msl/lexer/lexer.h"
#include "msl/preprocessor/macro.h"

namespace msl {

class Preprocessor {
  public:
    Preprocessor(SourceManager& sources, NameTable& names, Arena& arena, Diagnostics& diagnostics,
                 const std::vector<std::string>& includeFolders);

    // The tokens of the file with everything it includes; the last one is endOfFile. A token that a
    // macro made stands at the place of the macro's name in the text.
    std::vector<Token> run(const SourceManager::File& file);

    // Whether a bound ended the run: what is missing is not the source's fault.
    bool stopped() const { return stopped_; }

  private:
    // Where tokens come from: a file, or the tokens that a macro was replaced by.
    struct Frame {
        std::optional<Lexer> lexer;
        std::vector<Token> tokens;
        size_t position = 0;
        Macro* macro = nullptr; // enabled again when the frame is used up
        size_t conditionBase = 0;
    };
    struct Condition {
        Range place;
        bool taken = false;    // this section is
        bool anyTaken = false; // this or an earlier section is
        bool elseSeen = false;
    };
    struct Arguments {
        std::vector<std::vector<Token>> values;
    };

    Token nextRaw();
    bool expandIdentifier(const Token& token);
    bool collectArguments(const Token& name, const Macro& macro, Arguments& arguments);
    std::vector<Token> substitute(const Token& name, const Macro& macro, Arguments& arguments);
    std::vector<Token> expandAll(std::vector<Token> tokens);
    Token stringize(const std::vector<Token>& tokens, const Token& at);
    bool paste(Token& left, const Token& right, const Token& at);
    bool count(size_t tokens, const Token& at);
    Macro* macroOf(Name name);
    void expandBuiltin(const Token& token, const Macro& macro);
    Frame* fileFrame();

    // directives.cpp
    void directive(const Token& hash);
    void defineDirective(const std::vector<Token>& line);
    void undefDirective(const std::vector<Token>& line);
    void includeDirective(const Token& word, const std::vector<Token>& line, bool once);
    void ifDirective(const Token& word, const std::vector<Token>& line);
    void ifdefDirective(const Token& word, const std::vector<Token>& line, bool wanted);
    void elseDirective(const Token& word, const std::vector<Token>& line);
    void endifDirective(const Token& word);
    void pushCondition(const Token& word, bool taken);
    void skipSection();
    bool evaluate(const Token& word, const std::vector<Token>& line);
    bool quotedInclude(const Token& at, const std::string& path, bool once);
    bool isBuiltinHeader(std::string_view path) const;
    std::optional<std::string> findFile(const std::string& path) const;
    std::vector<Token> restOfLine();
    void error(const Token& at, std::string message) {
        diagnostics_.error(at.range(), std::move(message));
    }

    SourceManager& sources_;
    NameTable& names_;
    Arena& arena_;
    Diagnostics& diagnostics_;
    const std::vector<std::string>& includeFolders_;
    std::vector<Frame> frames_;
    std::vector<Condition> conditions_;
    std::vector<std::string> onceFiles_;
    std::optional<Token> pending_;
    Name definedName_;
    Name hasIncludeName_;
    Name variadicName_;
    size_t moved_ = 0; // tokens that expansion has moved
    uint32_t depth_ = 0;
    uint32_t counter_ = 0;
    bool stopped_ = false; // a bound was reached; no further token is given
};

// The value of the controlling expression of an #if, its macros expanded and `defined` replaced.
// Nothing, and a diagnostic, where it is no valid expression.
std::optional<bool> evaluateCondition(const std::vector<Token>& tokens, const Token& at,
                                      Diagnostics& diagnostics);

} // namespace msl
