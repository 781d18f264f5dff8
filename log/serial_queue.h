#pragma once
// Work done one piece at a time on a thread of its own.

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace vantor {

/// Posting never waits for the work that runs.
class SerialQueue {
  public:
    SerialQueue();
    /// Runs everything that was posted, then ends the thread.
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    /// Any thread. Work runs in the order of posting.
    void async(std::function<void()> work);

    /// Waits until everything that was posted before has run. Any thread but the queue's own.
    void drain();

  private:
    void run();

    /// Guards the members up to `ending_`. Not held while work runs.
    std::mutex mutex_;
    std::condition_variable posted_;
    std::condition_variable finished_;
    std::deque<std::function<void()>> waiting_;
    std::uint64_t postedCount_ = 0;
    std::uint64_t finishedCount_ = 0;
    bool ending_ = false;
    /// Last, so that it starts when everything that it uses is there.
    std::thread thread_;
};

} // namespace vantor
