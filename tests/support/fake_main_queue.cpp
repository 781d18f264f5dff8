#include "tests/support/fake_main_queue.h"

#include <algorithm>
#include <utility>

namespace vantor {

struct FakeMainQueue::Delayed : WorkItem {
    void cancel() override {
        mainThread.require("a work item is cancelled on the main thread");
        cancelled = true;
    }

    MainThreadCheck mainThread;
    double due = 0;
    std::uint64_t order = 0;
    std::function<void()> work;
    bool cancelled = false;
};

struct FakeMainQueue::Timer {
    double due = 0;
    double interval = 0;
    std::uint64_t order = 0;
    std::function<void()> block;
    bool valid = true;
};

class FakeMainQueue::TimerHandle : public RepeatingTimer {
  public:
    explicit TimerHandle(std::shared_ptr<Timer> timer) : timer_(std::move(timer)) {}
    ~TimerHandle() override { timer_->valid = false; }
    void invalidate() override { timer_->valid = false; }

  private:
    std::shared_ptr<Timer> timer_;
};

FakeMainQueue::~FakeMainQueue() = default;

void FakeMainQueue::async(std::function<void()> work) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(work));
}

std::shared_ptr<WorkItem> FakeMainQueue::asyncAfter(double seconds, std::function<void()> work) {
    mainThread_.require("delayed work is posted on the main thread");
    auto item = std::make_shared<Delayed>();
    item->due = clock_.now() + seconds;
    item->order = order_++;
    item->work = std::move(work);
    delayed_.push_back(item);
    return item;
}

std::unique_ptr<RepeatingTimer> FakeMainQueue::repeatingTimer(double interval,
                                                              std::function<void()> block) {
    mainThread_.require("a timer is made on the main thread");
    fakeRequire(interval > 0, "a timer's interval is positive");
    auto timer = std::make_shared<Timer>();
    timer->due = clock_.now() + interval;
    timer->interval = interval;
    timer->order = order_++;
    timer->block = std::move(block);
    std::erase_if(timers_, [](const auto& known) { return known.expired(); });
    timers_.push_back(timer);
    return std::make_unique<TimerHandle>(std::move(timer));
}

void FakeMainQueue::drain() {
    mainThread_.require("the main queue is drained on the main thread");
    while (true) {
        std::function<void()> work;
        {
            const std::lock_guard lock(mutex_);
            if (posted_.empty()) {
                return;
            }
            work = std::move(posted_.front());
            posted_.pop_front();
        }
        work();
    }
}

std::shared_ptr<FakeMainQueue::Delayed> FakeMainQueue::nextDelayed() const {
    const auto next =
        std::min_element(delayed_.begin(), delayed_.end(), [](const auto& a, const auto& b) {
            return std::pair(a->due, a->order) < std::pair(b->due, b->order);
        });
    return next != delayed_.end() ? *next : nullptr;
}

std::shared_ptr<FakeMainQueue::Timer> FakeMainQueue::nextTimer() const {
    std::shared_ptr<Timer> next;
    for (const auto& known : timers_) {
        const auto timer = known.lock();
        if (timer && timer->valid &&
            (!next || std::pair(timer->due, timer->order) < std::pair(next->due, next->order))) {
            next = timer;
        }
    }
    return next;
}

void FakeMainQueue::advance(double seconds) {
    const double end = clock_.now() + seconds;
    drain();
    while (true) {
        const auto delayed = nextDelayed();
        const auto timer = nextTimer();
        const bool delayedFirst = delayed && (!timer || delayed->due <= timer->due);
        if (delayedFirst && delayed->due <= end) {
            clock_.set(std::max(clock_.now(), delayed->due));
            std::erase(delayed_, delayed);
            if (!delayed->cancelled) {
                delayed->work();
            }
        } else if (!delayedFirst && timer && timer->due <= end) {
            clock_.set(std::max(clock_.now(), timer->due));
            timer->due += timer->interval;
            timer->block();
        } else {
            break;
        }
        drain();
    }
    clock_.set(end);
}

std::size_t FakeMainQueue::postedCount() const {
    const std::lock_guard lock(mutex_);
    return posted_.size();
}

std::size_t FakeMainQueue::delayedCount() const {
    return static_cast<std::size_t>(std::count_if(
        delayed_.begin(), delayed_.end(), [](const auto& item) { return !item->cancelled; }));
}

std::size_t FakeMainQueue::timerCount() const {
    return static_cast<std::size_t>(
        std::count_if(timers_.begin(), timers_.end(), [](const auto& known) {
            const auto timer = known.lock();
            return timer && timer->valid;
        }));
}

void FakeMainQueue::clear() {
    delayed_.clear();
    timers_.clear();
    // Destroyed without the lock: what a piece of work holds may post again.
    std::deque<std::function<void()>> dropped;
    {
        const std::lock_guard lock(mutex_);
        dropped.swap(posted_);
    }
}

} // namespace vantor
