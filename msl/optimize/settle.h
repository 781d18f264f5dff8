// Gives every free instruction the best place for it: as late as its users allow, which keeps few
// values alive at a time, but outside of loops that it does not depend on. What nothing uses goes.
// After Click, "Global Code Motion / Global Value Numbering".
#pragma once

#include "msl/optimize/flow.h"
#include "msl/optimize/freedom.h"

namespace msl::ir {

class Settler {
  public:
    // `used` tells of every value of the module whether it is needed.
    Settler(Module& module, const Freedom& freedom, std::vector<bool> used);

    void run(const Function& function, const Flow& flow);

  private:
    struct Step {
        Value value;
        uint32_t nextOperand;
    };

    void collect(const Function& function, const Flow& flow);
    void findEarliest(Value value, const Flow& flow);
    void use(Value value, uint32_t block, const Flow& flow);
    void place(Value value, const Flow& flow);
    uint32_t bestPlace(Value value, const Flow& flow) const;
    void usePhis(const Function& function, const Flow& flow);
    void rebuild(const Function& function, const Flow& flow);
    void dropPhis(Block& block);
    void link(Value& first, Value& last, Value value);
    void append(Value value, uint32_t at, Block& block);
    bool isNeeded(Value value) const { return used_[value] && module_.resolve(value) == value; }

    Module& module_;
    const Freedom& freedom_;
    std::vector<bool> used_;
    // By value, blocks by their positions; kNowhere for what stands in no block.
    std::vector<uint32_t> homes_;    // where it stands
    std::vector<uint32_t> earliest_; // the first block in which it could stand
    std::vector<uint32_t> places_;   // where its users allow it; in the end, where it goes
    std::vector<Value> order_;       // of the function's instructions before
    std::vector<uint32_t> starts_;   // of each block in `order_`
    std::vector<Value> moved_;       // by their new block
    std::vector<Step> stack_;
    uint64_t steps_ = 0;
};

} // namespace msl::ir
