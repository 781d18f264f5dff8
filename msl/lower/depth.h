// Counts how deep lowering has gone into statements, expressions and calls.
#pragma once

#include "msl/lower/lower.h"

namespace msl {

class Lowerer::Depth {
  public:
    explicit Depth(Lowerer& lowerer) : lowerer_(lowerer) { ++lowerer_.depth_; }
    ~Depth() { --lowerer_.depth_; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;

  private:
    Lowerer& lowerer_;
};

} // namespace msl
