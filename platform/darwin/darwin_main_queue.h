#pragma once

#include "platform/main_queue.h"

namespace vantor::darwin {

/// The main dispatch queue, and NSTimer on the main run loop.
class DarwinMainQueue : public MainQueue {
  public:
    void async(std::function<void()> work) override;
    std::shared_ptr<WorkItem> asyncAfter(double seconds, std::function<void()> work) override;
    std::unique_ptr<RepeatingTimer> repeatingTimer(double interval,
                                                   std::function<void()> block) override;
    bool isMainThread() const override;
};

} // namespace vantor::darwin
