#pragma once
// The main thread's queue, run loop and timers.
//   Linux: sd-event with an eventfd and timers.
//   macOS: the main dispatch queue, NSRunLoop and NSTimer.

#include <functional>
#include <memory>

namespace vantor {

/// A posted piece of work that can still be called off. Main thread.
class WorkItem {
  public:
    virtual ~WorkItem() = default;
    /// The work will not run; nothing happens when it already has. Dropping the last reference
    /// does not cancel.
    virtual void cancel() = 0;
};

/// A repeating timer on the main run loop in its common modes. Main thread.
class RepeatingTimer {
  public:
    virtual ~RepeatingTimer() = default;
    /// It does not fire again. Destruction invalidates too.
    virtual void invalidate() = 0;
};

class MainQueue {
  public:
    virtual ~MainQueue() = default;

    /// Posts work from any thread; it runs on the main thread in the order of posting.
    virtual void async(std::function<void()> work) = 0;
    /// Runs `work` on the main queue `seconds` from now. Main thread.
    virtual std::shared_ptr<WorkItem> asyncAfter(double seconds, std::function<void()> work) = 0;
    /// Fires every `interval` seconds, first after one interval. Main thread.
    virtual std::unique_ptr<RepeatingTimer> repeatingTimer(double interval,
                                                           std::function<void()> block) = 0;
    /// Whether the caller is on the main thread.
    virtual bool isMainThread() const = 0;
};

} // namespace vantor
