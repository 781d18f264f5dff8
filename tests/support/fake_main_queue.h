#pragma once
// A main queue that runs only when a test says so, by a clock that tests advance.

#include "platform/main_queue.h"
#include "platform/media_clock.h"
#include "tests/support/fake_contract.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vantor {

class FakeMediaClock : public MediaClock {
  public:
    double now() const override { return now_; }
    /// Moves the clock alone; nothing that is due runs. It may be set back by a test that means it.
    void set(double seconds) { now_ = seconds; }
    void advance(double seconds) { now_ += seconds; }

  private:
    double now_ = 1000;
};

class FakeMainQueue : public MainQueue {
  public:
    explicit FakeMainQueue(FakeMediaClock& clock) : clock_(clock) {}
    ~FakeMainQueue() override;

    void async(std::function<void()> work) override;
    std::shared_ptr<WorkItem> asyncAfter(double seconds, std::function<void()> work) override;
    std::unique_ptr<RepeatingTimer> repeatingTimer(double interval,
                                                   std::function<void()> block) override;
    bool isMainThread() const override { return mainThread_.holds(); }

    /// Runs what was posted, and what that posts.
    void drain();
    /// Drains, then moves the clock by `seconds`, running what becomes due at its own moment.
    void advance(double seconds);

    std::size_t postedCount() const;
    /// Work that is waiting for its moment and not cancelled.
    std::size_t delayedCount() const;
    /// Timers that were neither invalidated nor destroyed.
    std::size_t timerCount() const;

    /// Drops everything that is waiting.
    void clear();

  private:
    struct Delayed;
    struct Timer;
    class TimerHandle;

    std::shared_ptr<Delayed> nextDelayed() const;
    std::shared_ptr<Timer> nextTimer() const;

    MainThreadCheck mainThread_;
    FakeMediaClock& clock_;
    /// Guards posted_.
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> posted_;
    std::uint64_t order_ = 0;
    std::vector<std::shared_ptr<Delayed>> delayed_;
    std::vector<std::weak_ptr<Timer>> timers_;
};

} // namespace vantor
