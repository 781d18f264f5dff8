#pragma once
// Counts what a program allocates with operator new, on the thread that asks. What C libraries and
// drivers take with malloc is theirs and not counted.

#include <cstdint>

namespace vantor::bench {

void startCounting();
/// Allocations since startCounting on this thread.
std::uint64_t stopCounting();

} // namespace vantor::bench
