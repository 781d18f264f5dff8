#include <algorithm>

#include "msl/library/unsupported.h"
#include "msl/sema/sema.h"

namespace msl {

Sema::Sema(NameTable& names, Arena& arena, TypeTable& types, Diagnostics& diagnostics)
    : names_(names), arena_(arena), types_(types), diagnostics_(diagnostics) {
    metal_.name = names_.intern("metal");
    metal_.parent = &global_;
}

// Whether kernels stand among the declarations.
static bool haveKernels(std::span<ast::Decl* const> declarations) {
    return std::any_of(declarations.begin(), declarations.end(), [](const ast::Decl* decl) {
        return decl->kind == ast::DeclKind::space
                   ? haveKernels(decl->members)
                   : decl->function != nullptr &&
                         decl->function->stage == ast::FunctionStage::kernel;
    });
}

tree::Unit Sema::run(const std::vector<ast::Decl*>& declarations) {
    unit_.hasKernels = haveKernels(declarations);
    for (const auto* decl : declarations) {
        if (diagnostics_.exhausted()) {
            break;
        }
        declaration(decl);
    }
    return std::move(unit_);
}

bool Sema::tooDeep(Range range) {
    if (depth_ <= kMaxLoweringDepth) {
        return false;
    }
    error(range, "the source is nested too deeply");
    return true;
}

// Whether the namespace is the other one, or that of a struct derived from the other one's.
static bool holdsNamesOf(const Space* space, const Space* other) {
    return space == other ||
           std::any_of(space->bases.begin(), space->bases.end(),
                       [&](const Space* base) { return holdsNamesOf(base, other); });
}

// What a pack's name means while a pattern is expanded: one of its elements.
Symbol* Sema::elementOf(Symbol* symbol) const {
    return symbol != nullptr && symbol->isPack && packIndex_ && *packIndex_ < symbol->pack.size()
               ? symbol->pack[*packIndex_]
               : symbol;
}

Symbol* Sema::lookup(Name name) const {
    const void* function = state_ != nullptr ? state_->function : nullptr;
    Symbol* best = nullptr;
    uint32_t bestDistance = UINT32_MAX;
    for (Symbol* symbol = name->symbol; symbol != nullptr; symbol = symbol->outer) {
        if (symbol->space == nullptr) {
            if (symbol->owner == function) {
                return elementOf(symbol);
            }
            continue;
        }
        uint32_t distance = 0;
        const Space* space = space_;
        while (space != nullptr && !holdsNamesOf(space, symbol->space)) {
            space = space->parent;
            ++distance;
        }
        const bool used =
            space == nullptr && std::find(used_.begin(), used_.end(), symbol->space) != used_.end();
        if ((space != nullptr || used) && distance < bestDistance) {
            best = symbol;
            bestDistance = distance;
        }
    }
    return elementOf(best);
}

Symbol* Sema::lookupIn(Name name, const Space* space) const {
    for (Symbol* symbol = name->symbol; symbol != nullptr; symbol = symbol->outer) {
        if (symbol->space == space) {
            return symbol;
        }
    }
    for (const Space* base : space != nullptr ? space->bases : std::span<Space*>()) {
        if (Symbol* found = lookupIn(name, base)) {
            return found;
        }
    }
    return nullptr;
}

bool Sema::isMetalSpace(const ast::QualifiedName& name) const {
    if (name.spaces.empty()) {
        return false;
    }
    const auto first = name.spaces.front()->text;
    return first == "metal" || first == "simd" || first == "fast" || first == "precise";
}

// The namespace that a qualified name names; nothing, and a diagnostic, where there is none.
Space* Sema::spaceOf(const ast::QualifiedName& name) {
    Space* space = nullptr;
    if (name.owner != nullptr) {
        ast::TypeSyntax syntax;
        syntax.kind = ast::TypeSyntaxKind::named;
        syntax.name = name.owner;
        syntax.range = name.owner->range;
        const Type* type = resolveNamed(&syntax);
        const auto* record = type == nullptr ? nullptr : recordOf(type);
        if (record == nullptr) {
            if (type != nullptr) {
                error(name.range, "'" + toText(type) + "' has no members to name");
            }
            return nullptr;
        }
        space = record->space;
    }
    for (const Name part : name.spaces) {
        Symbol* symbol = space == nullptr ? lookup(part) : lookupIn(part, space);
        if (symbol != nullptr && symbol->kind == SymbolKind::space) {
            space = symbol->target;
            continue;
        }
        if (symbol != nullptr && symbol->kind == SymbolKind::type) {
            const auto* record = recordOf(symbol->type);
            if (record != nullptr && record->space != nullptr) {
                space = record->space;
                continue;
            }
        }
        error(name.range, "there is no namespace or type named '" + std::string(part->text) + "'");
        return nullptr;
    }
    return space;
}

Symbol* Sema::lookup(const ast::QualifiedName& name) {
    if (name.spaces.empty() && name.owner == nullptr) {
        return lookup(name.name);
    }
    if (isMetalSpace(name)) {
        // Of the library's namespaces only what a source or the prelude adds has symbols.
        const Symbol* part = lookup(name.spaces.front());
        for (size_t i = 1; part != nullptr && i < name.spaces.size(); ++i) {
            part =
                part->kind == SymbolKind::space ? lookupIn(name.spaces[i], part->target) : nullptr;
        }
        if (part == nullptr || part->kind != SymbolKind::space) {
            return nullptr;
        }
    }
    const Space* space = spaceOf(name);
    return space == nullptr ? nullptr : lookupIn(name.name, space);
}

Sema::StructRecord* Sema::recordOf(const Type* type) const {
    const auto found = records_.find(type);
    return found == records_.end() ? nullptr : found->second;
}

const Sema::Member* Sema::methodOf(const Type* type, Name name) const {
    if (const auto* record = recordOf(type)) {
        for (const auto& method : record->methods) {
            if (method.name == name) {
                return &method;
            }
        }
    }
    return nullptr;
}

Symbol* Sema::declare(SymbolKind kind, Name name, Range range) {
    auto* symbol = arena_.make<Symbol>();
    symbol->kind = kind;
    symbol->name = name;
    symbol->range = range;
    if (state_ != nullptr) {
        symbol->owner = state_->function;
        scope_.push_back(symbol);
    } else {
        symbol->space = space_;
    }
    symbol->outer = name->symbol;
    name->symbol = symbol;
    return symbol;
}

void Sema::closeScope(size_t mark) {
    while (scope_.size() > mark) {
        scope_.back()->name->symbol = scope_.back()->outer;
        scope_.pop_back();
    }
}

bool Sema::sameScope(const Symbol& symbol) const {
    if (state_ == nullptr) {
        return symbol.space == space_;
    }
    return symbol.owner == state_->function &&
           std::find(scope_.begin() + static_cast<ptrdiff_t>(scopeStart_), scope_.end(), &symbol) !=
               scope_.end();
}

// Names the one of the known words that is most like the unknown one, if one is like it.
void Sema::suggest(std::span<const std::string_view> known, std::string_view unknown, Range range) {
    const uint32_t limit = unknown.size() <= 3 ? 1 : 2;
    std::string_view best;
    uint32_t distance = limit + 1;
    for (const auto candidate : known) {
        const uint32_t edits = editDistance(candidate, unknown, limit);
        if (edits < distance && edits > 0 && !candidate.empty()) {
            distance = edits;
            best = candidate;
        }
    }
    if (!best.empty()) {
        diagnostics_.note(range, "did you mean '" + std::string(best) + "'?");
    }
}

void Sema::reportUnknown(const ast::QualifiedName& name, std::string_view what) {
    const auto text = name.name->text;
    if (const auto reason = unsupportedReason(text); !reason.empty()) {
        error(name.range, std::string(reason));
        return;
    }
    const uint32_t before = diagnostics_.errorCount();
    error(name.range, "there is no " + std::string(what) + " named '" + std::string(text) + "'");
    if (diagnostics_.errorCount() == before || diagnostics_.exhausted()) {
        return;
    }
    if (const auto ours = nameHere(text); !ours.empty()) {
        diagnostics_.note(name.range, "the language calls it '" + std::string(ours) + "'");
        return;
    }
    std::vector<std::string_view> known;
    for (const Name candidate : names_.all()) {
        if (candidate->symbol != nullptr && lookup(candidate) != nullptr) {
            known.push_back(candidate->text);
        }
    }
    for (const auto& function : allLibraryFunctions()) {
        known.push_back(function.name);
    }
    suggest(known, text, name.range);
}

} // namespace msl
