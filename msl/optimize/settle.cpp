#include "msl/optimize/settle.h"

#include <algorithm>

namespace msl::ir {
namespace {

constexpr uint32_t kNowhere = UINT32_MAX;

// Steps up the tree of dominators in all; what has no place by then stays where it is.
constexpr uint64_t kMaxSteps = uint64_t{1} << 25;

} // namespace

Settler::Settler(Module& module, const Freedom& freedom, std::vector<bool> used)
    : module_(module), freedom_(freedom), used_(std::move(used)),
      homes_(module.instructions.size(), kNowhere), earliest_(module.instructions.size(), kNowhere),
      places_(module.instructions.size(), kNowhere) {}

void Settler::run(const Function& function, const Flow& flow) {
    collect(function, flow);
    usePhis(function, flow);
    // Users before what they use.
    for (uint32_t at = flow.blockCount(); at-- > 0;) {
        const Block& block = module_.blocks[function.layout[at]];
        if (block.condition != kNoValue) {
            use(block.condition, at, flow);
        }
        for (uint32_t i = starts_[at + 1]; i-- > starts_[at];) {
            place(order_[i], flow);
        }
    }
    rebuild(function, flow);
}

void Settler::collect(const Function& function, const Flow& flow) {
    order_.clear();
    starts_.clear();
    for (uint32_t at = 0; at < flow.blockCount(); ++at) {
        const Block& block = module_.blocks[function.layout[at]];
        starts_.push_back(static_cast<uint32_t>(order_.size()));
        for (Value phi = block.firstPhi; phi != kNoValue; phi = module_.instructions[phi].next) {
            homes_[phi] = earliest_[phi] = at;
        }
        for (Value value = block.first; value != kNoValue;
             value = module_.instructions[value].next) {
            homes_[value] = earliest_[value] = at;
            order_.push_back(value);
            findEarliest(value, flow);
        }
    }
    starts_.push_back(static_cast<uint32_t>(order_.size()));
}

// An instruction can stand where the last of its operands does, unless it must not run too often.
void Settler::findEarliest(Value value, const Flow& flow) {
    const auto& instruction = module_.instructions[value];
    if (flow.loopOf(homes_[value]) == kNoLoop || !freedom_.isFree(instruction) ||
        !freedom_.isSafeAnywhere(instruction)) {
        return;
    }
    uint32_t earliest = 0;
    for (const Value operand : module_.valuesOf(instruction)) {
        if (const uint32_t at = earliest_[module_.resolve(operand)]; at != kNowhere) {
            earliest = std::max(earliest, at);
        }
    }
    earliest_[value] = earliest;
}

// Notes a use at the end of a block.
void Settler::use(Value value, uint32_t block, const Flow& flow) {
    value = module_.resolve(value);
    if (homes_[value] == kNowhere || module_.instructions[value].op == Op::phi) {
        return;
    }
    uint32_t& place = places_[value];
    if (place == kNowhere) {
        place = block;
        return;
    }
    while (!flow.dominates(place, block)) {
        if (++steps_ > kMaxSteps) {
            place = homes_[value];
            return;
        }
        place = flow.dominator(place);
    }
}

// What phis use is needed at the end of the blocks that lead to them.
void Settler::usePhis(const Function& function, const Flow& flow) {
    for (const BlockId id : function.layout) {
        for (Value phi = module_.blocks[id].firstPhi; phi != kNoValue;
             phi = module_.instructions[phi].next) {
            if (!isNeeded(phi)) {
                continue;
            }
            const auto operands = module_.operandsOf(module_.instructions[phi]);
            for (size_t i = 0; i < operands.size(); i += 2) {
                use(operands[i], flow.positionOf(operands[i + 1]), flow);
            }
        }
    }
}

void Settler::place(Value value, const Flow& flow) {
    const auto& instruction = module_.instructions[value];
    uint32_t& place = places_[value];
    if (!isNeeded(value)) {
        place = kNowhere;
        return;
    }
    place = freedom_.isFree(instruction) ? bestPlace(value, flow) : homes_[value];
    for (const Value operand : module_.valuesOf(instruction)) {
        use(operand, place, flow);
    }
}

// From where the users allow it up to where it runs no more often than it has to. A loop's continue
// part runs as often as its body, so that nothing gains by moving into it.
uint32_t Settler::bestPlace(Value value, const Flow& flow) const {
    uint32_t place = places_[value];
    uint32_t loop = flow.loopOf(place);
    while (loop != kNoLoop) {
        const Flow::Loop& around = flow.loop(loop);
        if (!flow.isInside(earliest_[value], loop)) {
            place = flow.dominator(around.header);
            loop = flow.loopOf(place);
        } else if (place >= around.continues && homes_[value] < around.continues) {
            place = flow.dominator(around.continues);
            loop = flow.loopOf(place);
        } else {
            loop = around.outer;
        }
    }
    return place;
}

void Settler::rebuild(const Function& function, const Flow& flow) {
    moved_.clear();
    for (const Value value : order_) {
        if (places_[value] != kNowhere && places_[value] != homes_[value]) {
            moved_.push_back(value);
        }
    }
    std::stable_sort(moved_.begin(), moved_.end(),
                     [&](Value a, Value b) { return places_[a] < places_[b]; });
    auto next = moved_.begin();
    for (uint32_t at = 0; at < flow.blockCount(); ++at) {
        Block& block = module_.blocks[function.layout[at]];
        dropPhis(block);
        block.first = block.last = kNoValue;
        for (uint32_t i = starts_[at]; i < starts_[at + 1]; ++i) {
            if (places_[order_[i]] == at) {
                append(order_[i], at, block);
            }
        }
        for (; next != moved_.end() && places_[*next] == at; ++next) {
            if (homes_[*next] != at) {
                append(*next, at, block);
            }
        }
    }
}

void Settler::dropPhis(Block& block) {
    Value phi = block.firstPhi;
    block.firstPhi = block.lastPhi = kNoValue;
    while (phi != kNoValue) {
        const Value next = module_.instructions[phi].next;
        if (isNeeded(phi)) {
            link(block.firstPhi, block.lastPhi, phi);
        }
        phi = next;
    }
}

// Puts a value at the end of a list.
void Settler::link(Value& first, Value& last, Value value) {
    module_.instructions[value].next = kNoValue;
    if (first == kNoValue) {
        first = value;
    } else {
        module_.instructions[last].next = value;
    }
    last = value;
}

// Puts an instruction behind what stands in the block, and before it those that come from elsewhere
// and that it uses.
void Settler::append(Value value, uint32_t at, Block& block) {
    stack_.push_back({value, 0});
    while (!stack_.empty()) {
        auto& top = stack_.back();
        const auto operands = module_.valuesOf(module_.instructions[top.value]);
        if (top.nextOperand < operands.size()) {
            const Value operand = module_.resolve(operands[top.nextOperand++]);
            if (places_[operand] == at && homes_[operand] != at) {
                stack_.push_back({operand, 0});
            }
            continue;
        }
        const Value ready = top.value;
        stack_.pop_back();
        homes_[ready] = at;
        link(block.first, block.last, ready);
    }
}

} // namespace msl::ir
