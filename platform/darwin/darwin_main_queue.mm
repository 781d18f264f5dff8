#include "platform/darwin/darwin_system.h"

#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>

namespace vantor::darwin {
namespace {

class DispatchedWork : public WorkItem {
  public:
    explicit DispatchedWork(dispatch_block_t block) : block_(block) {}
    void cancel() override { dispatch_block_cancel(block_); }

  private:
    dispatch_block_t block_;
};

class RunLoopTimer : public RepeatingTimer {
  public:
    explicit RunLoopTimer(NSTimer* timer) : timer_(timer) {}
    ~RunLoopTimer() override { [timer_ invalidate]; }
    RunLoopTimer(const RunLoopTimer&) = delete;
    RunLoopTimer& operator=(const RunLoopTimer&) = delete;
    void invalidate() override { [timer_ invalidate]; }

  private:
    NSTimer* timer_;
};

} // namespace

void DarwinMainQueue::async(std::function<void()> work) {
    dispatch_async(dispatch_get_main_queue(), ^{
      work();
    });
}

std::shared_ptr<WorkItem> DarwinMainQueue::asyncAfter(double seconds, std::function<void()> work) {
    const dispatch_block_t block = dispatch_block_create(static_cast<dispatch_block_flags_t>(0), ^{
      work();
    });
    const auto delay = static_cast<std::int64_t>(seconds * NSEC_PER_SEC);
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delay), dispatch_get_main_queue(), block);
    return std::make_shared<DispatchedWork>(block);
}

std::unique_ptr<RepeatingTimer> DarwinMainQueue::repeatingTimer(double interval,
                                                                std::function<void()> block) {
    NSTimer* timer = [NSTimer timerWithTimeInterval:interval
                                            repeats:YES
                                              block:^(NSTimer*) {
                                                block();
                                              }];
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
    return std::make_unique<RunLoopTimer>(timer);
}

bool DarwinMainQueue::isMainThread() const { return NSThread.isMainThread; }

} // namespace vantor::darwin
