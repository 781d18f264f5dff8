#include "msl/optimize/flow.h"

namespace msl::ir {

Flow::Flow(const Module& module, const Function& function, std::vector<uint32_t>& positions)
    : positions_(positions) {
    positions_.resize(module.blocks.size());
    for (uint32_t i = 0; i < function.layout.size(); ++i) {
        positions_[function.layout[i]] = i;
    }
    findDominators(module, function);
    numberTree();
    findLoops(module, function);
}

// After Cooper, Harvey and Kennedy, "A Simple, Fast Dominance Algorithm". Every way but a loop's
// way back leads onwards in the layout, so that one pass finds them all. A block's ways in are met
// from the last one upwards, and each step up the tree is then taken once.
void Flow::findDominators(const Module& module, const Function& function) {
    constexpr uint32_t kNone = UINT32_MAX;
    struct Way {
        uint32_t from;
        uint32_t next; // of those into the same block, in falling order
    };
    std::vector<Way> ways;
    std::vector<uint32_t> lastWay(function.layout.size(), kNone);
    // No way may lead to where a construct's branches would have met, or to a loop's continue
    // block: such a block hangs on the construct's first one.
    std::vector<uint32_t> constructs(function.layout.size(), 0);
    dominators_.assign(function.layout.size(), 0);
    for (uint32_t at = 0; at < function.layout.size(); ++at) {
        uint32_t dominator = lastWay[at] == kNone ? constructs[at] : ways[lastWay[at]].from;
        for (uint32_t i = lastWay[at]; i != kNone; i = ways[i].next) {
            uint32_t other = ways[i].from;
            while (dominator != other) {
                uint32_t& later = dominator > other ? dominator : other;
                later = dominators_[later];
            }
        }
        dominators_[at] = dominator;
        const bool isReached = at == 0 || lastWay[at] != kNone;
        const auto reach = [&](BlockId block) {
            const uint32_t to = positions_[block];
            if (isReached && to > at) {
                ways.push_back({at, lastWay[to]});
                lastWay[to] = static_cast<uint32_t>(ways.size() - 1);
            }
        };
        const Block& block = module.blocks[function.layout[at]];
        if (block.merge != Merge::none) {
            constructs[positions_[block.mergeBlock]] = at;
        }
        if (block.merge == Merge::loop) {
            constructs[positions_[block.continueBlock]] = at;
        }
        switch (block.terminator) {
        case Terminator::branch:
            reach(block.target);
            break;
        case Terminator::conditional:
            reach(block.target);
            reach(block.otherTarget);
            break;
        case Terminator::multiway:
            reach(block.target);
            for (uint32_t i = 0; i < block.caseCount; ++i) {
                reach(module.cases[block.firstCase + i].target);
            }
            break;
        default:
            break;
        }
    }
}

void Flow::numberTree() {
    const uint32_t count = blockCount();
    sizes_.assign(count, 1);
    for (uint32_t i = count; i-- > 1;) {
        sizes_[dominators_[i]] += sizes_[i];
    }
    order_.assign(count, 0);
    std::vector<uint32_t> next(count, 1); // of each block's children
    for (uint32_t i = 1; i < count; ++i) {
        const uint32_t parent = dominators_[i];
        order_[i] = next[parent];
        next[parent] += sizes_[i];
        next[i] = order_[i] + 1;
    }
}

void Flow::findLoops(const Module& module, const Function& function) {
    loopOf_.assign(blockCount(), kNoLoop);
    uint32_t inner = kNoLoop;
    for (uint32_t at = 0; at < blockCount(); ++at) {
        while (inner != kNoLoop && at >= loops_[inner].end) {
            inner = loops_[inner].outer;
        }
        const Block& block = module.blocks[function.layout[at]];
        if (block.merge == Merge::loop) {
            loops_.push_back({.header = at,
                              .continues = positions_[block.continueBlock],
                              .end = positions_[block.mergeBlock],
                              .outer = inner});
            inner = static_cast<uint32_t>(loops_.size() - 1);
        }
        loopOf_[at] = inner;
    }
}

} // namespace msl::ir
