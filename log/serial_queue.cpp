#include "log/serial_queue.h"

#include <utility>

namespace vantor {

SerialQueue::SerialQueue() : thread_([this] { run(); }) {}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    posted_.notify_one();
    thread_.join();
}

void SerialQueue::async(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(work));
        ++postedCount_;
    }
    posted_.notify_one();
}

void SerialQueue::drain() {
    std::unique_lock lock(mutex_);
    const std::uint64_t target = postedCount_;
    finished_.wait(lock, [&] { return finishedCount_ >= target; });
}

void SerialQueue::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        posted_.wait(lock, [this] { return !waiting_.empty() || ending_; });
        if (waiting_.empty()) {
            return;
        }
        std::function<void()> work = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
        ++finishedCount_;
        finished_.notify_all();
    }
}

} // namespace vantor
