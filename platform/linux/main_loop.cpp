#include "platform/linux/main_loop.h"

#include "platform/linux/file_descriptor.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <optional>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <systemd/sd-event.h>
#include <thread>
#include <vector>

namespace vantor {
namespace {

/// Timers drive frames, so the loop does not round them to save wake-ups.
constexpr std::uint64_t kTimerAccuracyMicroseconds = 1;
constexpr double kMaxSeconds = 1e9;

void require(int status, const char* what) {
    if (status < 0) {
        std::fprintf(stderr, "the main loop cannot %s: error %d\n", what, -status);
        std::abort();
    }
}

std::uint64_t nowMicroseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000U +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000U;
}

std::uint64_t toMicroseconds(double seconds) {
    const double bounded = std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, kMaxSeconds);
    return static_cast<std::uint64_t>(bounded * 1e6);
}

/// The one owner of an event source; dropping it detaches the source from the loop, from within the
/// source's own handler too.
class Source {
  public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source() { reset(); }
    sd_event_source** out() { return &source_; }
    sd_event_source* get() const { return source_; }
    void reset() { source_ = sd_event_source_disable_unref(source_); }

  private:
    sd_event_source* source_ = nullptr;
};

class LoopWorkItem;

/// The items that are waiting for their time. The loop keeps them, since dropping the caller's
/// reference cancels nothing; shared with the items, which callers may keep beyond the loop.
using PendingItems = std::vector<std::shared_ptr<LoopWorkItem>>;

class LoopWorkItem : public WorkItem, public std::enable_shared_from_this<LoopWorkItem> {
  public:
    LoopWorkItem(std::shared_ptr<PendingItems> pending, std::function<void()> work)
        : pending_(std::move(pending)), work_(std::move(work)) {}

    void schedule(sd_event* event, double seconds) {
        pending_->push_back(shared_from_this());
        require(sd_event_add_time(event, source_.out(), CLOCK_MONOTONIC,
                                  nowMicroseconds() + toMicroseconds(seconds),
                                  kTimerAccuracyMicroseconds, due, this),
                "add a timer");
    }

    void cancel() override {
        // The loop's may be the last reference.
        const auto self = shared_from_this();
        source_.reset();
        work_ = nullptr;
        std::erase(*pending_, self);
    }

  private:
    static int due(sd_event_source*, std::uint64_t, void* data) {
        auto* const self = static_cast<LoopWorkItem*>(data);
        const auto work = std::exchange(self->work_, nullptr);
        self->cancel();
        work();
        return 0;
    }

    std::shared_ptr<PendingItems> pending_;
    std::function<void()> work_;
    Source source_;
};

class LoopTimer : public RepeatingTimer {
  public:
    LoopTimer(sd_event* event, double interval, std::function<void()> block)
        : interval_(std::max<std::uint64_t>(toMicroseconds(interval), 1)),
          next_(nowMicroseconds() + interval_),
          block_(std::make_shared<std::function<void()>>(std::move(block))) {
        require(sd_event_add_time(event, source_.out(), CLOCK_MONOTONIC, next_,
                                  kTimerAccuracyMicroseconds, due, this),
                "add a timer");
        require(sd_event_source_set_enabled(source_.get(), SD_EVENT_ON), "enable a timer");
    }

    void invalidate() override { source_.reset(); }

  private:
    static int due(sd_event_source* source, std::uint64_t, void* data) {
        auto* self = static_cast<LoopTimer*>(data);
        // A loop that was held up does not make up for the ticks that it missed.
        self->next_ = std::max(self->next_ + self->interval_, nowMicroseconds());
        sd_event_source_set_time(source, self->next_);
        const auto block = self->block_;
        (*block)();
        return 0;
    }

    std::uint64_t interval_;
    std::uint64_t next_;
    std::shared_ptr<std::function<void()>> block_;
    Source source_;
};

class LoopAlarm : public Alarm {
  public:
    LoopAlarm(sd_event* event, std::function<void()> due)
        : due_(std::make_shared<std::function<void()>>(std::move(due))) {
        require(sd_event_add_time(event, source_.out(), CLOCK_MONOTONIC, 0,
                                  kTimerAccuracyMicroseconds, happened, this),
                "add a timer");
        cancel();
    }

    void set(double seconds) override {
        sd_event_source_set_time(source_.get(), nowMicroseconds() + toMicroseconds(seconds));
        sd_event_source_set_enabled(source_.get(), SD_EVENT_ONESHOT);
    }
    void cancel() override { sd_event_source_set_enabled(source_.get(), SD_EVENT_OFF); }

  private:
    static int happened(sd_event_source*, std::uint64_t, void* data) {
        const auto due = static_cast<LoopAlarm*>(data)->due_;
        (*due)();
        return 0;
    }

    std::shared_ptr<std::function<void()>> due_;
    Source source_;
};

class LoopWatch : public DescriptorWatch {
  public:
    LoopWatch(sd_event* event, int descriptor, std::uint32_t events,
              std::function<void(std::uint32_t)> ready)
        : ready_(std::make_shared<std::function<void(std::uint32_t)>>(std::move(ready))) {
        require(sd_event_add_io(event, source_.out(), descriptor, events, happened, this),
                "watch a descriptor");
    }

    void setEvents(std::uint32_t events) override {
        sd_event_source_set_io_events(source_.get(), events);
        sd_event_source_set_enabled(source_.get(), events == 0 ? SD_EVENT_OFF : SD_EVENT_ON);
    }

    void setUrgency(Urgency urgency) override {
        // Lower numbers come first.
        require(sd_event_source_set_priority(source_.get(),
                                             SD_EVENT_PRIORITY_NORMAL - static_cast<int>(urgency)),
                "order its sources");
    }

  private:
    static int happened(sd_event_source*, int, std::uint32_t events, void* data) {
        // The callback may destroy the watch.
        const auto ready = static_cast<LoopWatch*>(data)->ready_;
        (*ready)(events);
        return 0;
    }

    std::shared_ptr<std::function<void(std::uint32_t)>> ready_;
    Source source_;
};

} // namespace

struct MainLoop::State {
    std::thread::id thread = std::this_thread::get_id();
    sd_event* event = nullptr;
    FileDescriptor wake;
    std::shared_ptr<PendingItems> pending = std::make_shared<PendingItems>();
    std::function<void()> turnEnded;
    /// Set when the loop is to end.
    std::optional<int> status;
    std::vector<std::pair<int, std::function<void(int)>>> signals;

    /// Guards `posted`.
    std::mutex lock;
    std::vector<std::function<void()>> posted;

    static int wokenUp(sd_event_source*, int descriptor, std::uint32_t, void* data) {
        auto* self = static_cast<State*>(data);
        eventfd_t count = 0;
        eventfd_read(descriptor, &count);
        std::vector<std::function<void()>> work;
        {
            const std::scoped_lock guard(self->lock);
            work.swap(self->posted);
        }
        for (auto& item : work) {
            item();
            item = nullptr;
        }
        return 0;
    }

    static int afterTurn(sd_event_source*, void* data) {
        if (const auto& work = static_cast<State*>(data)->turnEnded) {
            work();
        }
        return 0;
    }

    static int signalled(sd_event_source*, const signalfd_siginfo* info, void* data) {
        for (const auto& [number, handler] : static_cast<State*>(data)->signals) {
            if (number == static_cast<int>(info->ssi_signo)) {
                handler(number);
            }
        }
        return 0;
    }
};

MainLoop::MainLoop() : state_(std::make_unique<State>()) {
    require(sd_event_new(&state_->event), "be made");
    state_->wake = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    require(state_->wake.get(), "be woken");
    require(sd_event_add_io(state_->event, nullptr, state_->wake.get(), EPOLLIN, State::wokenUp,
                            state_.get()),
            "be woken");
}

MainLoop::~MainLoop() {
    // Work that never ran is dropped before the loop that its timers belong to.
    state_->posted.clear();
    for (const auto& item : PendingItems(*state_->pending)) {
        item->cancel();
    }
    sd_event_unref(state_->event);
}

void MainLoop::async(std::function<void()> work) {
    bool first = false;
    {
        const std::scoped_lock guard(state_->lock);
        first = state_->posted.empty();
        state_->posted.push_back(std::move(work));
    }
    if (first) {
        eventfd_write(state_->wake.get(), 1);
    }
}

std::shared_ptr<WorkItem> MainLoop::asyncAfter(double seconds, std::function<void()> work) {
    auto item = std::make_shared<LoopWorkItem>(state_->pending, std::move(work));
    item->schedule(state_->event, seconds);
    return item;
}

std::unique_ptr<RepeatingTimer> MainLoop::repeatingTimer(double interval,
                                                         std::function<void()> block) {
    return std::make_unique<LoopTimer>(state_->event, interval, std::move(block));
}

bool MainLoop::isMainThread() const { return std::this_thread::get_id() == state_->thread; }

std::unique_ptr<DescriptorWatch> MainLoop::watch(int descriptor, std::uint32_t events,
                                                 std::function<void(std::uint32_t)> ready) {
    return std::make_unique<LoopWatch>(state_->event, descriptor, events, std::move(ready));
}

std::unique_ptr<Alarm> MainLoop::alarm(std::function<void()> due) {
    return std::make_unique<LoopAlarm>(state_->event, std::move(due));
}

void MainLoop::onSignal(int signal, std::function<void(int)> signalled) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    state_->signals.emplace_back(signal, std::move(signalled));
    require(sd_event_add_signal(state_->event, nullptr, signal, State::signalled, state_.get()),
            "take a signal");
}

void MainLoop::setTurnEnded(std::function<void()> work) {
    const bool first = !state_->turnEnded;
    state_->turnEnded = std::move(work);
    if (first) {
        require(sd_event_add_post(state_->event, nullptr, State::afterTurn, state_.get()),
                "end its turns");
    }
}

int MainLoop::run() {
    state_->status.reset();
    while (!state_->status) {
        require(sd_event_run(state_->event, UINT64_MAX), "turn");
    }
    return *state_->status;
}

void MainLoop::turn() { require(sd_event_run(state_->event, 0), "turn"); }

void MainLoop::stop(int status) {
    async([state = state_.get(), status] { state->status = status; });
}

sd_event* MainLoop::event() const { return state_->event; }

} // namespace vantor
