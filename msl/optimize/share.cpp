#include "msl/optimize/share.h"

#include <algorithm>
#include <bit>

namespace msl::ir {
namespace {

bool isCommutative(Op op) {
    switch (op) {
    case Op::fAdd:
    case Op::fMul:
    case Op::iAdd:
    case Op::iMul:
    case Op::bitAnd:
    case Op::bitOr:
    case Op::bitXor:
    case Op::dot:
    case Op::fEqual:
    case Op::fNotEqual:
    case Op::iEqual:
    case Op::iNotEqual:
    case Op::logicalEqual:
    case Op::logicalNotEqual:
    case Op::logicalAnd:
    case Op::logicalOr:
        return true;
    default:
        return false;
    }
}

class Sharer {
  public:
    Sharer(Module& module, const Function& function, const Flow& flow, const Freedom& freedom)
        : module_(module), function_(function), flow_(flow), freedom_(freedom) {}

    void run() {
        module_.replaced.resize(module_.instructions.size(), kNoValue);
        size_t count = 0;
        for (const BlockId id : function_.layout) {
            const Block& block = module_.blocks[id];
            for (const Value first : {block.firstPhi, block.first}) {
                for (Value value = first; value != kNoValue;
                     value = module_.instructions[value].next) {
                    ++count;
                }
            }
        }
        entries_.resize(std::bit_ceil(2 * count + 2));
        for (uint32_t at = 0; at < flow_.blockCount(); ++at) {
            sharePhis(at);
            for (Value value = module_.blocks[function_.layout[at]].first; value != kNoValue;
                 value = module_.instructions[value].next) {
                if (freedom_.isFree(module_.instructions[value])) {
                    share(value, at);
                }
            }
        }
        dropLoopPhis();
    }

  private:
    struct Entry {
        Value value = kNoValue;
        uint32_t block = 0;
    };

    void sharePhis(uint32_t at) {
        for (Value phi = module_.blocks[function_.layout[at]].firstPhi; phi != kNoValue;
             phi = module_.instructions[phi].next) {
            if (module_.resolve(phi) != phi) {
                continue;
            }
            if (const Value only = onlyValue(phi); only != kNoValue) {
                module_.replaced[phi] = only;
            } else {
                share(phi, at);
            }
        }
    }

    // What a loop's way back brings is known only when the loop has been seen.
    void dropLoopPhis() {
        for (const BlockId id : function_.layout) {
            const Block& block = module_.blocks[id];
            for (Value phi = block.merge == Merge::loop ? block.firstPhi : kNoValue;
                 phi != kNoValue; phi = module_.instructions[phi].next) {
                if (const Value only = onlyValue(phi);
                    module_.resolve(phi) == phi && only != kNoValue) {
                    module_.replaced[phi] = only;
                }
            }
        }
    }

    // What a phi brings, where that is the same on every way.
    Value onlyValue(Value phi) const {
        const auto operands = module_.operandsOf(module_.instructions[phi]);
        Value only = kNoValue;
        for (size_t i = 0; i < operands.size(); i += 2) {
            const Value operand = module_.resolve(operands[i]);
            if (operand != phi && operand != only) {
                if (only != kNoValue) {
                    return kNoValue;
                }
                only = operand;
            }
        }
        return only;
    }

    // Puts the operands into the form in which equal instructions have the same.
    void normalise(Instruction& instruction) {
        Value* operands = module_.operands.data() + instruction.firstOperand;
        if (instruction.op == Op::phi) {
            for (size_t i = 0; i < instruction.operandCount; i += 2) {
                operands[i] = module_.resolve(operands[i]);
            }
            return;
        }
        const size_t count = module_.valuesOf(instruction).size();
        for (size_t i = 0; i < count; ++i) {
            operands[i] = module_.resolve(operands[i]);
        }
        if (isCommutative(instruction.op) && operands[0] > operands[1]) {
            std::swap(operands[0], operands[1]);
        }
    }

    uint64_t hashOf(const Instruction& instruction) const {
        constexpr uint64_t kFactor = 0x9E3779B97F4A7C15U;
        uint64_t hash = (static_cast<uint64_t>(instruction.op) << 32U) ^ instruction.type;
        hash = (hash ^ (uint64_t{instruction.extra} << 16U)) * kFactor;
        for (const uint32_t operand : module_.operandsOf(instruction)) {
            hash = (std::rotl(hash, 23) ^ operand) * kFactor;
        }
        return hash;
    }

    bool equal(const Instruction& a, const Instruction& b) const {
        const auto left = module_.operandsOf(a);
        const auto right = module_.operandsOf(b);
        return a.op == b.op && a.type == b.type && a.extra == b.extra &&
               std::equal(left.begin(), left.end(), right.begin(), right.end());
    }

    // The latest of equal instructions is kept in the table: it is the likeliest to stand on the
    // way to what follows.
    void share(Value value, uint32_t block) {
        Instruction& instruction = module_.instructions[value];
        normalise(instruction);
        const size_t mask = entries_.size() - 1;
        size_t slot = (hashOf(instruction) >> 20U) & mask;
        while (entries_[slot].value != kNoValue &&
               !equal(module_.instructions[entries_[slot].value], instruction)) {
            slot = (slot + 1) & mask;
        }
        Entry& entry = entries_[slot];
        if (entry.value != kNoValue && flow_.dominates(entry.block, block)) {
            module_.replaced[value] = entry.value;
        } else {
            entry = {.value = value, .block = block};
        }
    }

    Module& module_;
    const Function& function_;
    const Flow& flow_;
    const Freedom& freedom_;
    std::vector<Entry> entries_;
};

} // namespace

void shareEqualValues(Module& module, const Function& function, const Flow& flow,
                      const Freedom& freedom) {
    Sharer(module, function, flow, freedom).run();
}

} // namespace msl::ir
