#include <algorithm>

#include "msl/ir/ir.h"

namespace msl::ir {
namespace {

class Checker {
  public:
    explicit Checker(const Module& module) : module_(module) {}

    std::vector<std::string> run() {
        for (const auto& function : module_.functions) {
            checkFunction(function);
        }
        return std::move(problems_);
    }

  private:
    void report(const std::string& text) {
        if (problems_.size() < 50) {
            problems_.push_back(text);
        }
    }

    void checkFunction(const Function& function) {
        inLayout_.assign(module_.blocks.size(), false);
        defined_.assign(module_.instructions.size(), false);
        for (const Value value : module_.constants) {
            defined_[value] = true;
        }
        for (const auto& global : module_.globals) {
            defined_[global.variable] = true;
        }
        for (const Value local : function.locals) {
            defined_[local] = true;
        }
        for (const BlockId id : function.layout) {
            if (inLayout_[id]) {
                report("block b" + std::to_string(id) + " stands twice");
            }
            inLayout_[id] = true;
            // Block order is only known to follow dominance within a block and along structure;
            // that every operand is defined somewhere in the function is checked here.
            for (const Value first : {module_.blocks[id].firstPhi, module_.blocks[id].first}) {
                for (Value value = first; value != kNoValue;
                     value = module_.instructions[value].next) {
                    defined_[value] = true;
                }
            }
        }
        for (const BlockId id : function.layout) {
            checkBlock(id);
        }
    }

    void checkTarget(BlockId from, BlockId target) {
        if (target == kNoBlock || !inLayout_[target]) {
            report("block b" + std::to_string(from) + " branches out of its function");
        }
    }

    void checkOperand(Value user, Value operand) {
        const Value resolved = module_.resolve(operand);
        if (resolved == kNoValue || resolved >= module_.instructions.size() ||
            !defined_[resolved]) {
            report("value %" + std::to_string(user) + " uses %" + std::to_string(operand) +
                   ", which is not defined");
        }
    }

    void checkBlock(BlockId id) {
        const Block& block = module_.blocks[id];
        for (Value phi = block.firstPhi; phi != kNoValue; phi = module_.instructions[phi].next) {
            if (module_.resolve(phi) != phi) {
                continue;
            }
            const auto operands = module_.operandsOf(module_.instructions[phi]);
            for (size_t i = 0; i < operands.size(); i += 2) {
                checkOperand(phi, operands[i]);
                if (module_.instructions[module_.resolve(operands[i])].type !=
                    module_.instructions[phi].type) {
                    report("phi %" + std::to_string(phi) + " mixes types");
                }
                checkTarget(id, operands[i + 1]);
            }
        }
        for (Value value = block.first; value != kNoValue;
             value = module_.instructions[value].next) {
            checkInstruction(value);
        }
        switch (block.terminator) {
        case Terminator::none:
            report("block b" + std::to_string(id) + " has no end");
            break;
        case Terminator::branch:
            checkTarget(id, block.target);
            break;
        case Terminator::conditional:
            checkTarget(id, block.target);
            checkTarget(id, block.otherTarget);
            checkOperand(block.condition, block.condition);
            if (module_.instructions[module_.resolve(block.condition)].type != kBool) {
                report("block b" + std::to_string(id) + " branches on what is not bool");
            }
            break;
        case Terminator::multiway:
            checkTarget(id, block.target);
            for (uint32_t i = 0; i < block.caseCount; ++i) {
                checkTarget(id, module_.cases[block.firstCase + i].target);
            }
            if (block.merge != Merge::selection) {
                report("the switch of b" + std::to_string(id) + " has no merge block");
            }
            break;
        default:
            break;
        }
        if (block.merge != Merge::none) {
            checkTarget(id, block.mergeBlock);
        }
        if (block.merge == Merge::loop) {
            checkTarget(id, block.continueBlock);
        }
    }

    void checkInstruction(Value value) {
        const auto& instruction = module_.instructions[value];
        const auto operands = module_.operandsOf(instruction);
        for (const Value operand : module_.valuesOf(instruction)) {
            checkOperand(value, operand);
        }
        const auto typeAt = [&](size_t i) {
            return module_.instructions[module_.resolve(operands[i])].type;
        };
        if (instruction.op >= Op::fAdd && instruction.op <= Op::uMod &&
            instruction.op != Op::fNegate && operands.size() == 2 &&
            (typeAt(0) != instruction.type || typeAt(1) != instruction.type)) {
            report("value %" + std::to_string(value) + " mixes types");
        }
        if (instruction.op >= Op::fEqual && instruction.op <= Op::uGreaterEqual &&
            typeAt(0) != typeAt(1)) {
            report("value %" + std::to_string(value) + " compares different types");
        }
        if (instruction.op == Op::store && module_.types[typeAt(0)].element != typeAt(1)) {
            report("a store of %" + std::to_string(operands[1]) + " does not fit its pointer");
        }
    }

    const Module& module_;
    std::vector<std::string> problems_;
    std::vector<bool> inLayout_;
    std::vector<bool> defined_;
};

} // namespace

std::vector<std::string> check(const Module& module) { return Checker(module).run(); }

} // namespace msl::ir
