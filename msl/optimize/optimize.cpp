#include "msl/optimize/optimize.h"

#include "msl/optimize/settle.h"
#include "msl/optimize/share.h"

namespace msl {

void optimize(ir::Module& module) {
    std::vector<uint32_t> positions;
    std::vector<ir::Flow> flows;
    ir::Freedom freedom(module);
    for (const auto& function : module.functions) {
        const ir::Flow& flow = flows.emplace_back(module, function, positions);
        freedom.enter(function);
        ir::shareEqualValues(module, function, flow, freedom);
    }
    ir::Settler settler(module, freedom, ir::usedValues(module));
    for (size_t i = 0; i < flows.size(); ++i) {
        freedom.enter(module.functions[i]);
        settler.run(module.functions[i], flows[i]);
    }
}

} // namespace msl
