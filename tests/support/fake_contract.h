#pragma once
// The fakes hold callers to the seam's contracts: a violation stops the test program.

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace vantor {

inline void fakeRequire(bool holds, const char* message) {
    if (!holds) {
        std::fprintf(stderr, "seam contract violated: %s\n", message);
        std::abort();
    }
}

/// The thread that made it is the main thread.
class MainThreadCheck {
  public:
    bool holds() const { return std::this_thread::get_id() == main_; }
    void require(const char* message) const { fakeRequire(holds(), message); }

  private:
    std::thread::id main_ = std::this_thread::get_id();
};

} // namespace vantor
