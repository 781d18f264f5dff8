#pragma once
// The main thread's run loop on Linux: an sd-event loop with an eventfd for posted work.

#include "platform/main_queue.h"

#include <cstdint>
#include <functional>
#include <memory>

struct sd_event;

namespace vantor {

/// Which of several things that are ready at once comes before the others.
enum class Urgency : std::uint8_t { usual, urgent, mostUrgent };

/// A descriptor watched by the loop. Destruction stops watching (it does not close). Main thread.
class DescriptorWatch {
  public:
    virtual ~DescriptorWatch() = default;
    /// Changes the epoll events waited for; 0 suspends the watch.
    virtual void setEvents(std::uint32_t events) = 0;
    /// Posted work and everything that was not told otherwise is of usual urgency.
    virtual void setUrgency(Urgency urgency) = 0;
};

/// A timer that runs once for each time it is set, and allocates nothing when it is. Destruction
/// stops it. Main thread.
class Alarm {
  public:
    virtual ~Alarm() = default;
    /// In so many seconds, whatever it was set to before.
    virtual void set(double seconds) = 0;
    virtual void cancel() = 0;
};

/// Made on the main thread, which is then the one that runs it. Only `async` and `stop` may be
/// called on other threads. Nothing wakes while nothing is posted, due or readable.
class MainLoop : public MainQueue {
  public:
    MainLoop();
    ~MainLoop() override;
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    void async(std::function<void()> work) override;
    std::shared_ptr<WorkItem> asyncAfter(double seconds, std::function<void()> work) override;
    std::unique_ptr<RepeatingTimer> repeatingTimer(double interval,
                                                   std::function<void()> block) override;
    bool isMainThread() const override;

    /// Calls `ready` with the epoll events that happened. The callback may destroy its own watch.
    std::unique_ptr<DescriptorWatch> watch(int descriptor, std::uint32_t events,
                                           std::function<void(std::uint32_t)> ready);

    /// Calls `due` each time the alarm's time has come. The callback may destroy the alarm.
    std::unique_ptr<Alarm> alarm(std::function<void()> due);

    /// Calls `signalled` on the main loop when that signal arrives; it is blocked otherwise. For
    /// programs that end on SIGINT and SIGTERM, before any thread is started.
    void onSignal(int signal, std::function<void(int)> signalled);

    /// Runs `work` at the end of every turn of the loop in which something else ran, on the main
    /// thread (implicit layer transactions end there). At most one.
    void setTurnEnded(std::function<void()> work);

    /// Runs until `stop`; gives the exit status that `stop` was given. May be run again.
    int run();
    /// Any thread.
    void stop(int status);
    /// Runs what is ready now and waits for nothing; for programs that have a loop of their own.
    void turn();

    /// For libraries that attach themselves (sd-bus).
    sd_event* event() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace vantor
