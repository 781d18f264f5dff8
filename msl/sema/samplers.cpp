// Samplers written in the source.
#include <algorithm>
#include <bit>

#include "msl/sema/sema.h"

namespace msl {

// Whether a sampler's initialiser lists options, rather than name another sampler.
bool Sema::writesSampler(const ast::Expr* init) const {
    return init == nullptr || init->kind == ast::ExprKind::list ||
           init->kind == ast::ExprKind::construct;
}

// constexpr sampler name(option, ...): the options are words of the library's namespaces.
bool Sema::samplerVariable(const ast::Variable* syntax, tree::Variable* variable) {
    SamplerOptions options;
    struct Word {
        std::string_view name;
        int value;
    };
    static constexpr Word kAddresses[] = {{"clamp_to_edge", 0},
                                          {"clamp_to_zero", 1},
                                          {"clamp_to_border", 2},
                                          {"repeat", 3},
                                          {"mirrored_repeat", 4}};
    static constexpr Word kFilters[] = {{"nearest", 0}, {"linear", 1}};
    static constexpr Word kMipFilters[] = {{"none", 0}, {"nearest", 1}, {"linear", 2}};
    static constexpr Word kCompares[] = {{"never", 0},     {"less", 1},          {"less_equal", 2},
                                         {"greater", 3},   {"greater_equal", 4}, {"equal", 5},
                                         {"not_equal", 6}, {"always", 7}};
    static constexpr Word kBorders[] = {
        {"transparent_black", 0}, {"opaque_black", 1}, {"opaque_white", 2}};
    static constexpr Word kCoordinates[] = {{"normalized", 0}, {"pixel", 1}};
    const auto find = [](std::span<const Word> words, std::string_view name) {
        for (const auto& word : words) {
            if (word.name == name) {
                return word.value;
            }
        }
        return -1;
    };
    const auto items = syntax->init != nullptr ? syntax->init->items : std::span<ast::Expr*>();
    for (const auto* item : items) {
        if (item->kind == ast::ExprKind::call && item->a->kind == ast::ExprKind::name) {
            const auto word = item->a->name->name->text;
            std::vector<float> numbers;
            for (const auto* operand : item->items) {
                tree::Expr* expr = value(operand);
                constantSteps_ = 0;
                const auto known = expr == nullptr ? std::nullopt : evaluate(expr);
                const auto number = known ? convertScalar(*known, floatType()) : std::nullopt;
                if (!number) {
                    error(operand->range, "a sampler's option must be known when compiling");
                    return false;
                }
                numbers.push_back(static_cast<float>(std::bit_cast<double>(number->bits)));
            }
            if (word == "max_anisotropy" && numbers.size() == 1 && numbers[0] >= 1.0F &&
                numbers[0] <= 16.0F) {
                options.maxAnisotropy = static_cast<uint32_t>(numbers[0]);
            } else if (word == "lod_clamp" && numbers.size() == 2) {
                options.lodMin = numbers[0];
                options.lodMax = numbers[1];
            } else {
                error(item->range, "this is no option of a sampler");
                return false;
            }
            continue;
        }
        int found = -1;
        if (item->kind == ast::ExprKind::name && !item->name->spaces.empty()) {
            const auto set = item->name->spaces.back()->text;
            const auto word = item->name->name->text;
            const auto address = [&] {
                found = find(kAddresses, word);
                return static_cast<SamplerAddress>(std::max(found, 0));
            };
            const auto filter = [&] {
                found = find(kFilters, word);
                return static_cast<SamplerFilter>(std::max(found, 0));
            };
            if (set == "coord") {
                found = find(kCoordinates, word);
                options.normalizedCoordinates = found == 0;
            } else if (set == "address") {
                options.sAddress = options.tAddress = options.rAddress = address();
            } else if (set == "s_address") {
                options.sAddress = address();
            } else if (set == "t_address") {
                options.tAddress = address();
            } else if (set == "r_address") {
                options.rAddress = address();
            } else if (set == "filter") {
                options.magFilter = options.minFilter = filter();
            } else if (set == "mag_filter") {
                options.magFilter = filter();
            } else if (set == "min_filter") {
                options.minFilter = filter();
            } else if (set == "mip_filter") {
                found = find(kMipFilters, word);
                options.mipFilter = static_cast<SamplerMipFilter>(std::max(found, 0));
            } else if (set == "compare_func") {
                found = find(kCompares, word);
                options.compare = static_cast<SamplerCompare>(std::max(found, 0));
            } else if (set == "border_color") {
                found = find(kBorders, word);
                options.border = static_cast<SamplerBorder>(std::max(found, 0));
            }
        }
        if (found < 0) {
            error(item->range, "this is no option of a sampler");
            return false;
        }
    }
    variable->isConst = true;
    return internSampler(options, *variable);
}

// The number of a constexpr sampler among those of the unit.
bool Sema::internSampler(const SamplerOptions& options, tree::Variable& variable) {
    const auto same = std::find(unit_.samplers.begin(), unit_.samplers.end(), options);
    variable.samplerIndex = static_cast<uint32_t>(same - unit_.samplers.begin());
    if (same == unit_.samplers.end()) {
        if (unit_.samplers.size() >= kMaxConstantSamplers) {
            error(variable.range, "a source has at most " + std::to_string(kMaxConstantSamplers) +
                                      " different constexpr samplers");
            return false;
        }
        unit_.samplers.push_back(options);
    }
    return true;
}

// A sampler that gives texels as they are.
tree::Expr* Sema::plainSampler(Range range) {
    auto* variable = arena_.make<tree::Variable>();
    variable->range = range;
    variable->type = samplerType();
    variable->kind = tree::VariableKind::global;
    variable->isConst = true;
    const SamplerOptions options{.mipFilter = SamplerMipFilter::nearest};
    return internSampler(options, *variable) ? variableExpr(variable, range) : nullptr;
}

} // namespace msl
