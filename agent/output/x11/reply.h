#pragma once
// The owner of what XCB gives to be freed: replies, events, errors.

#include <cstdlib>
#include <memory>

namespace vantor::agent::x11 {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

template <typename T>
using Owned = std::unique_ptr<T, Free>;

template <typename T>
Owned<T> owned(T* memory) {
    return Owned<T>(memory);
}

} // namespace vantor::agent::x11
