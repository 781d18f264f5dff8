// One pass of the optimiser on what a source lowers to, printed.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "msl/optimize/flow.h"
#include "msl/optimize/freedom.h"
#include "tests/msl/stages_test_support.h"

namespace msl::tests {

using Pass =
    std::function<void(ir::Module&, const ir::Function&, const ir::Flow&, const ir::Freedom&)>;

inline ir::Module loweredForm(std::string_view source) {
    Stages stages(source);
    auto form = stages.form();
    EXPECT_FALSE(stages.diagnostics.hasErrors());
    return form;
}

inline std::string lowered(std::string_view source) { return ir::print(loweredForm(source)); }

inline std::string afterPass(std::string_view source, const Pass& pass) {
    auto form = loweredForm(source);
    std::vector<uint32_t> positions;
    ir::Freedom freedom(form);
    for (const auto& function : form.functions) {
        const ir::Flow flow(form, function, positions);
        freedom.enter(function);
        pass(form, function, flow, freedom);
    }
    const auto problems = ir::check(form);
    EXPECT_TRUE(problems.empty()) << problems.front();
    return ir::print(form);
}

inline size_t count(std::string_view text, std::string_view what) {
    size_t found = 0;
    for (size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) {
        ++found;
    }
    return found;
}

// The label of the block in which the text's first `what` stands.
inline std::string blockOf(const std::string& text, std::string_view what) {
    const size_t end = text.find(what);
    if (end == std::string::npos) {
        return "nowhere";
    }
    const size_t label = text.rfind("\nb", end) + 1;
    return text.substr(label, text.find(':', label) - label);
}

} // namespace msl::tests
