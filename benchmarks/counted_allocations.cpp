#include "benchmarks/counted_allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool counting = false;
thread_local std::uint64_t allocations = 0;

} // namespace

void* operator new(std::size_t size) {
    if (counting) {
        ++allocations;
    }
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace vantor::bench {

void startCounting() {
    allocations = 0;
    counting = true;
}

std::uint64_t stopCounting() {
    counting = false;
    return allocations;
}

} // namespace vantor::bench
