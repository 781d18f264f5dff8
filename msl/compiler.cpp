#include <algorithm>

#include "msl/ir/ir.h"
#include "msl/library/prelude.h"
#include "msl/lower/lower.h"
#include "msl/msl.h"
#include "msl/optimize/optimize.h"
#include "msl/parser/parser.h"
#include "msl/preprocessor/preprocessor.h"
#include "msl/sema/sema.h"
#include "msl/spirv/emitter.h"

namespace msl {
namespace {

bool usesPrelude(const NameTable& names) {
    const auto wanted = preludeNames();
    return std::any_of(wanted.begin(), wanted.end(),
                       [&](std::string_view name) { return names.contains(name); });
}

// The module, or nothing where a stage has reported an error.
std::optional<Module> compileStages(const SourceManager::File& file, SourceManager& sources,
                                    const Options& options, Diagnostics& diagnostics) {
    Arena arena;
    NameTable names(arena);
    TypeTable types(arena);

    Preprocessor preprocessor(sources, names, arena, diagnostics, options.includeFolders);
    const auto tokens = preprocessor.run(file);
    if (preprocessor.stopped()) {
        return std::nullopt;
    }

    std::vector<ast::Decl*> declarations;
    std::vector<Token> prelude;
    if (usesPrelude(names)) {
        for (const Name name : names.all()) {
            name->macro = nullptr; // the source's macros mean nothing in the library
            name->macroKnown = false;
        }
        Preprocessor reader(sources, names, arena, diagnostics, options.includeFolders);
        prelude = reader.run(sources.add("<metal_stdlib>", preludeText()));
        declarations = Parser(prelude, names, arena, diagnostics).run();
    }
    for (auto* declaration : Parser(tokens, names, arena, diagnostics).run()) {
        declarations.push_back(declaration);
    }
    if (diagnostics.hasErrors()) {
        // What could not be parsed is missing, and its uses would be reported as well.
        return std::nullopt;
    }

    Sema sema(names, arena, types, diagnostics);
    const auto unit = sema.run(declarations);
    if (diagnostics.hasErrors()) {
        return std::nullopt;
    }
    if (unit.entryPoints.empty()) {
        diagnostics.error(Range{}, unit.hasKernels
                                       ? "the source has only kernels, which are not compiled; it "
                                         "needs a vertex or fragment function"
                                       : "the source has no vertex or fragment function");
        return std::nullopt;
    }

    ir::Module form;
    Module result;
    Lowerer lowerer(form, diagnostics);
    lowerer.run(unit, result);
    if (diagnostics.hasErrors()) {
        return std::nullopt;
    }

    optimize(form);
    result.words = emitSpirv(form);
    return result;
}

} // namespace

CompileResult compile(std::string_view source, const Options& options) {
    SourceManager sources;
    Diagnostics diagnostics(sources);
    CompileResult result;
    if (source.size() > kMaxSourceBytes) {
        diagnostics.error(Range{}, "a source of " + std::to_string(source.size()) +
                                       " bytes exceeds the limit of " +
                                       std::to_string(kMaxSourceBytes));
    } else {
        const auto& file = sources.add(options.fileName, source);
        result.module = compileStages(file, sources, options, diagnostics);
    }
    result.diagnostics = diagnostics.take();
    return result;
}

} // namespace msl
