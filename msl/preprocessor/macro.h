// Macros and the names that are macros before the first line.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "msl/lexer/token.h"

namespace msl {

struct Macro {
    enum class Kind : uint8_t { object, function, line, file, counter };

    Kind kind = Kind::object;
    bool variadic = false; // the last parameter takes the rest of the arguments
    bool disabled = false; // being expanded: its name stands for itself
    std::span<Name> parameters{};
    std::span<Token> body{};
    Range place{}; // of its definition; no place for a predefined one
};

struct PredefinedMacro {
    std::string_view name;
    std::string_view body;
    Macro::Kind kind = Macro::Kind::object;
};

// Nothing where the name is not predefined.
const PredefinedMacro* findPredefinedMacro(std::string_view name, uint32_t hash);

} // namespace msl
