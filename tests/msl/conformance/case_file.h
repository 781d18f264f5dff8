// The conformance suite's cases: files of small shaders, each with what it must give.
//
//   //! case AClaimAboutTheLanguage
//   declarations
//   //! parameters , texture2d<float> t [[texture(0)]]     (optional)
//   //! body
//   the body of f_main, which sees the values of fragmentSource
//   //! gives 1 2 3 4
//
// "each FAMILY" begins lines of which every one is the body of a case of its own; behind "//=> " it
// says what that gives.
//
// A case without a body is a whole source; v_main is added where it has none. In place of what a
// case gives, "refused SENTENCE" says how its first error begins, and "compiles" that the validator
// takes the module.
#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

namespace msl::tests {

struct ConformanceCase {
    enum class Outcome { gives, compiles, refused };

    std::string file; // without folder and suffix
    std::string name;
    std::string declarations;
    std::string parameters;
    std::string body;
    bool hasBody = false;
    Outcome outcome = Outcome::compiles;
    std::array<float, 4> expected{};
    std::string refusal;
};

// How a case is named in lists of tests.
void PrintTo(const ConformanceCase& item, std::ostream* stream);

// Every case of every file in the folder, files in alphabetical order.
std::vector<ConformanceCase> readCases(const std::string& folder);

} // namespace msl::tests
