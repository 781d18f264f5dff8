#include "msl/ir/ir.h"

namespace msl::ir {

std::vector<bool> usedValues(const Module& module) {
    std::vector<bool> used(module.instructions.size(), false);
    std::vector<Value> work;
    const auto use = [&](Value value) {
        value = module.resolve(value);
        if (value != kNoValue && !used[value]) {
            used[value] = true;
            work.push_back(value);
        }
    };
    for (const auto& function : module.functions) {
        for (const BlockId id : function.layout) {
            const Block& block = module.blocks[id];
            use(block.condition);
            for (Value value = block.first; value != kNoValue;
                 value = module.instructions[value].next) {
                if (info(module.instructions[value].op).sideEffect) {
                    use(value);
                }
            }
        }
        for (const Value variable : function.interface) {
            use(variable);
        }
    }
    for (const auto& item : module.globals) {
        use(item.initializer);
    }
    while (!work.empty()) {
        const auto& instruction = module.instructions[work.back()];
        work.pop_back();
        if (instruction.op == Op::phi) {
            const auto operands = module.operandsOf(instruction);
            for (size_t i = 0; i < operands.size(); i += 2) {
                use(operands[i]);
            }
            continue;
        }
        for (const Value operand : module.valuesOf(instruction)) {
            use(operand);
        }
    }
    return used;
}

} // namespace msl::ir
