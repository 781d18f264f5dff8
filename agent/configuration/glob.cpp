#include "agent/configuration/glob.h"

#include <optional>

namespace vantor::agent {
namespace {

/// Where the UTF-8 character at `at` ends.
std::size_t characterEnd(std::string_view text, std::size_t at) {
    do {
        ++at;
    } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0U) == 0x80);
    return at;
}

} // namespace

bool matchesGlob(std::string_view text, std::string_view pattern) {
    // Only the last star ever needs to take another character: one before it has found its place as
    // early as can be, which leaves the most text to what follows.
    struct Star {
        std::size_t pattern;
        std::size_t text;
    };
    std::optional<Star> star;
    std::size_t at = 0;
    std::size_t wanted = 0;
    while (at < text.size()) {
        if (wanted < pattern.size() && pattern[wanted] == '*') {
            star = Star{.pattern = ++wanted, .text = at};
        } else if (wanted < pattern.size() && pattern[wanted] == '?') {
            at = characterEnd(text, at);
            ++wanted;
        } else if (wanted < pattern.size() && pattern[wanted] == text[at]) {
            ++at;
            ++wanted;
        } else if (star) {
            at = star->text = characterEnd(text, star->text);
            wanted = star->pattern;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', wanted) == std::string_view::npos;
}

} // namespace vantor::agent
