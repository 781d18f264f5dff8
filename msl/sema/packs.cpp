// Parameter packs. A pack's name means all its elements; while a pattern is expanded it means the
// one whose turn it is.
#include <algorithm>

#include "msl/sema/context.h"

namespace msl {

namespace {

// Calls `visit` with every unresolved name in the pattern.
template <typename Visit>
class Names {
  public:
    explicit Names(const Visit& visit) : visit_(visit) {}

    void in(const ast::Expr* expr) const {
        if (expr == nullptr) {
            return;
        }
        in(expr->a);
        in(expr->b);
        in(expr->c);
        in(expr->type);
        in(expr->name);
        for (const auto* item : expr->items) {
            in(item);
        }
    }
    void in(const ast::TypeSyntax* type) const {
        if (type != nullptr) {
            in(type->name);
            in(type->element);
            in(type->operand);
            in(type->length);
        }
    }
    void in(const ast::TemplateArgument& argument) const {
        in(argument.type);
        in(argument.value);
    }

  private:
    void in(const ast::QualifiedName* name) const {
        if (name == nullptr) {
            return;
        }
        in(name->owner);
        if (name->spaces.empty() && name->name != nullptr) {
            visit_(name->name);
        }
        for (const auto& argument : name->arguments) {
            in(argument);
        }
    }

    const Visit& visit_;
};

} // namespace

// How many elements the packs in a pattern have; nothing, and a diagnostic, where it has none.
template <typename Pattern>
std::optional<size_t> Sema::packLength(const Pattern& pattern, Range range) {
    std::optional<size_t> length;
    bool agree = true;
    const auto visit = [&](Name name) {
        if (const Symbol* symbol = lookup(name); symbol != nullptr && symbol->isPack) {
            agree = agree && (!length || *length == symbol->pack.size());
            length = symbol->pack.size();
        }
    };
    Names(visit).in(pattern);
    if (!length) {
        error(range, "there is no parameter pack in what '...' expands");
    } else if (!agree) {
        error(range, "the packs that '...' expands have different lengths");
        return std::nullopt;
    }
    return length;
}

// The items with every expansion replaced by its elements.
std::span<ast::Expr* const> Sema::expandItems(std::span<ast::Expr* const> items) {
    const auto expands = [](const ast::Expr* item) {
        return item->kind == ast::ExprKind::packExpansion;
    };
    if (std::none_of(items.begin(), items.end(), expands)) {
        return items;
    }
    std::vector<ast::Expr*> result;
    for (auto* item : items) {
        if (!expands(item)) {
            result.push_back(item);
            continue;
        }
        const size_t count = packLength(item->a, item->range).value_or(0);
        for (size_t i = 0; i < count; ++i) {
            auto* element = arena_.make<ast::Expr>();
            element->kind = ast::ExprKind::packElement;
            element->range = item->range;
            element->a = item->a;
            element->intValue = i;
            result.push_back(element);
        }
    }
    return arena_.copy(result);
}

// Where one argument expands to many, each of them by its number.
std::vector<Sema::GivenArgument>
Sema::expandArguments(std::span<const ast::TemplateArgument> arguments, Range range) {
    std::vector<GivenArgument> result;
    for (const auto& argument : arguments) {
        if (!argument.expands) {
            result.push_back({&argument, packIndex_});
            continue;
        }
        const size_t count = packLength(argument, range).value_or(0);
        for (size_t i = 0; i < count; ++i) {
            result.push_back({&argument, i});
        }
    }
    return result;
}

std::optional<size_t> Sema::parameterPackLength(const ast::Variable& parameter) {
    return packLength(parameter.type, parameter.range);
}

// A template's bindings with the elements of packs in line.
Sema::Bindings Sema::flattened(const Bindings& bindings) {
    Bindings flat;
    for (const auto& binding : bindings) {
        if (binding.isPack) {
            flat.insert(flat.end(), binding.pack.begin(), binding.pack.end());
        } else {
            flat.push_back(binding);
        }
    }
    return flat;
}

// Matches one element of a pack; what it says of pack parameters is added to them.
template <typename Match>
bool Sema::matchElement(Parameters parameters, Bindings& bindings, const Match& match) {
    Bindings single = bindings;
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (parameters[i].isPack) {
            single[i] = {};
        }
    }
    if (!match(single)) {
        return false;
    }
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (!parameters[i].isPack) {
            bindings[i] = single[i];
        } else if (single[i].known()) {
            bindings[i].isPack = true;
            bindings[i].pack.push_back(single[i]);
        }
    }
    return true;
}

bool Sema::matchPackElement(const ast::TypeSyntax* syntax, const Type* type, Parameters parameters,
                            Bindings& bindings) {
    return matchElement(parameters, bindings,
                        [&](Bindings& single) { return match(syntax, type, parameters, single); });
}

// A list of template arguments in a template's own text against what stands there.
bool Sema::matchList(std::span<const ast::TemplateArgument> syntax, const Bindings& given,
                     Parameters parameters, Bindings& bindings) {
    const Bindings flat = flattened(given);
    size_t next = 0;
    for (const auto& argument : syntax) {
        if (!argument.expands) {
            if (next >= flat.size() ||
                !matchArgument(argument, flat[next++], parameters, bindings)) {
                return false;
            }
            continue;
        }
        for (size_t i = 0; i < parameters.size(); ++i) {
            bindings[i].isPack = bindings[i].isPack || parameters[i].isPack;
        }
        for (; next < flat.size(); ++next) {
            const bool fits = matchElement(parameters, bindings, [&](Bindings& single) {
                return matchArgument(argument, flat[next], parameters, single);
            });
            if (!fits) {
                return false;
            }
        }
    }
    return true;
}

// Declares a pack; its elements have no place among the names of their own.
Symbol* Sema::declarePack(SymbolKind kind, Name name, Range range, size_t count) {
    Symbol* symbol = declare(kind, name, range);
    std::vector<Symbol*> elements;
    for (size_t i = 0; i < count; ++i) {
        auto* element = arena_.make<Symbol>(*symbol);
        elements.push_back(element);
    }
    symbol->isPack = true;
    symbol->pack = arena_.copy(elements);
    return symbol;
}

tree::Expr* Sema::packElement(const ast::Expr* expr) {
    const auto outer = packIndex_;
    packIndex_ = expr->intValue;
    tree::Expr* result = expression(expr->a);
    packIndex_ = outer;
    return result;
}

tree::Expr* Sema::sizeOfPack(const ast::Expr* expr) {
    const Symbol* symbol = lookup(expr->name->name);
    if (symbol == nullptr || !symbol->isPack) {
        error(expr->range, "'sizeof...' takes a parameter pack");
        return nullptr;
    }
    return constantExpr(scalarType(TypeKind::ulongType), symbol->pack.size(), expr->range);
}

} // namespace msl
