// Any text is preprocessed within the bounds: what comes out ends where the file does and holds no
// more tokens than a source may have, and a run that stops early says why.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "msl/preprocessor/preprocessor.h"
#include "msl/source/limits.h"

namespace {

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace msl;
    const std::string_view source(reinterpret_cast<const char*>(data), size);
    SourceManager sources;
    Diagnostics diagnostics(sources);
    Arena arena;
    NameTable names(arena);
    const std::vector<std::string> noFolders;
    const auto& file = sources.add("fuzz.metal", source);
    Preprocessor preprocessor(sources, names, arena, diagnostics, noFolders);
    const auto tokens = preprocessor.run(file);
    require(!tokens.empty() && tokens.back().is(TokenKind::endOfFile), "the tokens do not end");
    require(tokens.size() <= kMaxTokens + 1, "there are more tokens than a source may have");
    for (size_t i = 0; i + 1 < tokens.size(); ++i) {
        require(!tokens[i].is(TokenKind::endOfFile), "the tokens go on behind their end");
    }
    require(!preprocessor.stopped() || diagnostics.hasErrors(), "it stops without a diagnostic");
    return 0;
}
