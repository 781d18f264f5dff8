// Preloaded into a process, makes its wall clock jump a day forth and back at every fourth look.

#include <atomic>
#include <ctime>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr time_t kDay = 86400;

time_t jump() {
    static std::atomic<unsigned> looks = 0;
    return looks++ / 4 % 2 == 0 ? kDay : -kDay;
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* now) noexcept {
    const auto status = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    if (status == 0 && clock == CLOCK_REALTIME) {
        now->tv_sec += jump();
    }
    return status;
}

__attribute__((visibility("default"))) int gettimeofday(timeval* now, void*) noexcept {
    timespec precise{};
    const int status = clock_gettime(CLOCK_REALTIME, &precise);
    *now = {.tv_sec = precise.tv_sec, .tv_usec = precise.tv_nsec / 1000};
    return status;
}

__attribute__((visibility("default"))) time_t time(time_t* out) noexcept {
    timespec precise{};
    clock_gettime(CLOCK_REALTIME, &precise);
    if (out != nullptr) {
        *out = precise.tv_sec;
    }
    return precise.tv_sec;
}
}
