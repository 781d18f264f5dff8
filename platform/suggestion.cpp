#include "platform/suggestion.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace vantor {
namespace {

/// No identifier is near a word that is longer; the distance costs the product of both lengths.
constexpr std::size_t kLongestWord = 64;
/// A shorter word is part of too many names to say anything.
constexpr std::size_t kShortestPart = 3;

std::string lowered(std::string_view text) {
    std::string out(text);
    std::ranges::transform(out, out.begin(), [](unsigned char letter) {
        return static_cast<char>(std::tolower(letter));
    });
    return out;
}

/// How many letters must be put in, left out, replaced, or swapped with their neighbour (the
/// optimal string alignment distance).
std::size_t distance(std::string_view from, std::string_view to) {
    std::vector<std::vector<std::size_t>> costs(from.size() + 1,
                                                std::vector<std::size_t>(to.size() + 1));
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                costs[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = from[i - 1] == to[j - 1] ? 0 : 1;
            costs[i][j] = std::min(
                {costs[i - 1][j] + 1, costs[i][j - 1] + 1, costs[i - 1][j - 1] + replaced});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                costs[i][j] = std::min(costs[i][j], costs[i - 2][j - 2] + 1);
            }
        }
    }
    return costs[from.size()][to.size()];
}

bool holds(std::string_view whole, std::string_view part) {
    return part.size() >= kShortestPart && whole.find(part) != std::string_view::npos;
}

} // namespace

std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates) {
    if (word.empty() || word.size() > kLongestWord) {
        return {};
    }
    const std::string wanted = lowered(word);
    // One letter in three may be wrong.
    std::size_t least = std::max<std::size_t>(1, wanted.size() / 3) + 1;
    std::string_view best;
    for (const std::string_view candidate : candidates) {
        const std::string whole = lowered(candidate);
        const std::string_view last = std::string_view(whole).substr(whole.rfind('.') + 1);
        std::size_t cost = std::min(distance(wanted, whole), distance(wanted, last));
        if (cost > 1 && (holds(whole, wanted) || holds(wanted, whole))) {
            cost = 1;
        }
        if (cost < least) {
            least = cost;
            best = candidate;
        }
    }
    return best.empty() ? std::string() : "; did you mean \"" + std::string(best) + "\"?";
}

} // namespace vantor
