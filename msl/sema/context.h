// Analysis at another place of the source: names are looked up from a namespace, outside any
// function, until the context is left.
#pragma once

#include "msl/sema/sema.h"

namespace msl {

class Sema::Context {
  public:
    Context(Sema& sema, Space* space)
        : sema_(sema), space_(sema.space_), state_(sema.state_), scopeStart_(sema.scopeStart_),
          packIndex_(sema.packIndex_) {
        sema.packIndex_.reset();
        sema.space_ = space;
        sema.state_ = nullptr;
        sema.scopeStart_ = sema.scope_.size();
    }
    ~Context() {
        sema_.space_ = space_;
        sema_.state_ = state_;
        sema_.scopeStart_ = scopeStart_;
        sema_.packIndex_ = packIndex_;
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

  private:
    Sema& sema_;
    Space* space_;
    FunctionState* state_;
    size_t scopeStart_;
    std::optional<size_t> packIndex_;
};

} // namespace msl
