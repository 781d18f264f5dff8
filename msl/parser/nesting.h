// Counts how deep the parser has gone into nested constructs and refuses more than the bound.
#pragma once

#include "msl/parser/parser.h"

namespace msl {

class Parser::Nesting {
  public:
    explicit Nesting(Parser& parser) : parser_(parser) {
        if (++parser_.depth_ > kMaxNesting && !parser_.tooDeep_) {
            parser_.error(parser_.peek(), "the source is nested more than " +
                                              std::to_string(kMaxNesting) + " deep");
            parser_.tooDeep_ = true;
            // Nothing after this can be understood; going to the end unwinds every caller.
            parser_.position_ = parser_.tokens_.size() - 1;
        }
    }
    ~Nesting() { --parser_.depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
    bool refused() const { return parser_.tooDeep_; }

  private:
    Parser& parser_;
};

} // namespace msl
