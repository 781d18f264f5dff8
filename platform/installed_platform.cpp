#include "platform/platform.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace vantor {
namespace {

std::atomic<Platform*> installed{nullptr};

} // namespace

Platform& platform() {
    Platform* current = installed.load(std::memory_order_acquire);
    if (current == nullptr) {
        std::fputs("no platform is installed\n", stderr);
        std::abort();
    }
    return *current;
}

void installPlatform(Platform* platform) { installed.store(platform, std::memory_order_release); }

} // namespace vantor
