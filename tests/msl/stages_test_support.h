// A compilation taken apart, so that a test can stop after any stage.
#pragma once

#include <string>
#include <vector>

#include "msl/lower/lower.h"
#include "msl/parser/parser.h"
#include "msl/preprocessor/preprocessor.h"
#include "msl/sema/sema.h"

namespace msl::tests {

struct Stages {
    explicit Stages(std::string_view text)
        : names(arena), types(arena), diagnostics(sources), file(sources.add("t.metal", text)) {}

    std::vector<Token> tokens() {
        Preprocessor preprocessor(sources, names, arena, diagnostics, folders);
        return preprocessor.run(file);
    }
    std::vector<ast::Decl*> declarations() {
        kept = tokens();
        return Parser(kept, names, arena, diagnostics).run();
    }
    tree::Unit unit() {
        const auto declared = declarations();
        return Sema(names, arena, types, diagnostics).run(declared);
    }
    ir::Module form() {
        const auto analysed = unit();
        ir::Module result;
        Module reflected;
        Lowerer(result, diagnostics).run(analysed, reflected);
        return result;
    }
    // The tokens' spellings with single blanks between them.
    std::string spelled() {
        std::string text;
        for (const auto& token : tokens()) {
            if (!token.is(TokenKind::endOfFile)) {
                text += (text.empty() ? "" : " ") + std::string(token.text());
            }
        }
        return text;
    }

    Arena arena;
    NameTable names;
    TypeTable types;
    SourceManager sources;
    Diagnostics diagnostics;
    std::vector<std::string> folders;
    const SourceManager::File& file;
    std::vector<Token> kept;
};

} // namespace msl::tests
