// Counts how deep semantic analysis has gone into the tree and refuses more than the bound.
#pragma once

#include "msl/sema/sema.h"

namespace msl {

class Sema::DepthGuard {
  public:
    explicit DepthGuard(uint32_t& depth) : depth_(depth) { ++depth_; }
    ~DepthGuard() { --depth_; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

  private:
    uint32_t& depth_;
};

} // namespace msl
