#pragma once
// What a reader may still build. Shared references make a small file expand into a large tree;
// every value is paid for before it is made.

#include "platform/linux/archive/limits.h"

#include <string>

namespace vantor::archive {

class ExpansionBudget {
  public:
    /// False when `count` more values, or `bytes` more bytes of text and data, are not left.
    bool take(std::size_t count, std::size_t bytes) {
        if (count > values_ || bytes > bytes_) {
            return false;
        }
        values_ -= count;
        bytes_ -= bytes;
        return true;
    }

    /// Values that are left.
    std::size_t values() const { return values_; }

    static std::string exceeded() {
        return "expands beyond the limit of " + std::to_string(kMaxExpandedValues) +
               " values and " + std::to_string(kMaxExpandedBytes) + " bytes";
    }

  private:
    std::size_t values_ = kMaxExpandedValues;
    std::size_t bytes_ = kMaxExpandedBytes;
};

} // namespace vantor::archive
