#include "agent/output/pacing/refresh_timer.h"

#include <ctime>
#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <utility>

namespace vantor::agent {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr double kUsualRate = 60;
constexpr double kMinRate = 1;
constexpr double kMaxRate = 1000;

std::int64_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * kSecond + time.tv_nsec;
}

void arm(const FileDescriptor& timer, std::int64_t moment) {
    itimerspec spec{};
    spec.it_value = {.tv_sec = moment / kSecond, .tv_nsec = moment % kSecond};
    timerfd_settime(timer.get(), TFD_TIMER_ABSTIME, &spec, nullptr);
}

} // namespace

RefreshTimer::RefreshTimer(MainLoop& loop, double hertz, std::function<void()> due)
    : due_(std::move(due)), timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
      origin_(now()) {
    setRate(hertz);
    if (timer_) {
        watch_ = loop.watch(timer_.get(), EPOLLIN, [this](std::uint32_t) { fired(); });
    }
}

void RefreshTimer::setRate(double hertz) {
    const double rate = hertz >= kMinRate && hertz <= kMaxRate ? hertz : kUsualRate;
    interval_ = static_cast<std::int64_t>(static_cast<double>(kSecond) / rate);
}

void RefreshTimer::request() {
    if (!std::exchange(isAwaited_, true)) {
        arm(timer_, origin_ + ((now() - origin_) / interval_ + 1) * interval_);
    }
}

void RefreshTimer::cancel() {
    if (std::exchange(isAwaited_, false)) {
        // The moment 0 disarms.
        arm(timer_, 0);
    }
}

void RefreshTimer::fired() {
    std::uint64_t expirations = 0;
    if (::read(timer_.get(), &expirations, sizeof(expirations)) == sizeof(expirations) &&
        std::exchange(isAwaited_, false)) {
        due_();
    }
}

} // namespace vantor::agent
