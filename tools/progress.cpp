#include "tools/progress.h"

#include <ostream>
#include <utility>

namespace vantor {
namespace {

/// Back to the line's beginning, and erase it (ECMA-48's EL).
constexpr std::string_view kClearLine = "\r\x1b[K";

} // namespace

void Progress::say(std::string_view line) {
    if (console_.showsProgress) {
        console_.err << kClearLine << line << std::flush;
        said_ = true;
    }
}

void Progress::clear() {
    if (std::exchange(said_, false)) {
        console_.err << kClearLine << std::flush;
    }
}

} // namespace vantor
