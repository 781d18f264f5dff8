// What an instruction depends on besides its operands.
#pragma once

#include "msl/ir/ir.h"

namespace msl::ir {

// Whether instructions may be moved, or be left out where an equal one has been.
class Freedom {
  public:
    explicit Freedom(const Module& module);

    // What follows is about instructions of this function.
    void enter(const Function& function);

    // A free instruction gives the same for the same operands wherever it stands. What is not free
    // reads memory that may change, has an effect, or compares itself with its neighbours'.
    bool isFree(const Instruction& instruction) const;
    // Whether it may also run where the source would not have run it: neither an index that was
    // tested before nor a divisor of zero makes it undefined.
    bool isSafeAnywhere(const Instruction& instruction) const;

  private:
    bool isConstantMemory(Value pointer) const;

    const Module& module_;
    std::vector<bool> readOnly_; // variables
    bool writesBuffers_ = false; // the function does
};

} // namespace msl::ir
