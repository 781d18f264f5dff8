// The shape of a function's control flow: which blocks stand on every way to which others, and
// which loops they are in. Blocks are named by their position in the function's layout, in which a
// block stands behind all that dominate it.
#pragma once

#include <cstdint>
#include <vector>

#include "msl/ir/ir.h"

namespace msl::ir {

inline constexpr uint32_t kNoLoop = UINT32_MAX;

class Flow {
  public:
    struct Loop {
        uint32_t header = 0;    // positions: of the first block,
        uint32_t continues = 0; // of the first one of its continue part, which ends it,
        uint32_t end = 0;       // and of the first one behind the loop
        uint32_t outer = kNoLoop;
    };

    // `positions` is memory for every block of the module, which all its functions can share.
    Flow(const Module& module, const Function& function, std::vector<uint32_t>& positions);

    uint32_t blockCount() const { return static_cast<uint32_t>(dominators_.size()); }
    uint32_t positionOf(BlockId block) const { return positions_[block]; }
    // The last block that stands on every way to this one; the entry is its own.
    uint32_t dominator(uint32_t position) const { return dominators_[position]; }
    bool dominates(uint32_t a, uint32_t b) const {
        return order_[b] - order_[a] < sizes_[a]; // wraps where b stands before a
    }
    // The innermost loop that the block belongs to, or kNoLoop.
    uint32_t loopOf(uint32_t position) const { return loopOf_[position]; }
    const Loop& loop(uint32_t index) const { return loops_[index]; }
    bool isInside(uint32_t position, uint32_t loop) const {
        return position >= loops_[loop].header && position < loops_[loop].end;
    }

  private:
    void findDominators(const Module& module, const Function& function);
    void numberTree();
    void findLoops(const Module& module, const Function& function);

    std::vector<uint32_t>& positions_; // by block
    std::vector<uint32_t> dominators_;
    std::vector<uint32_t> order_; // of the dominators' tree: parents first, subtrees together
    std::vector<uint32_t> sizes_; // of the subtrees
    std::vector<uint32_t> loopOf_;
    std::vector<Loop> loops_;
};

} // namespace msl::ir
