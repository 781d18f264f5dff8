#include "platform/linux/system/linux_media_clock.h"

#include <ctime>

namespace vantor {

double LinuxMediaClock::now() const {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace vantor
