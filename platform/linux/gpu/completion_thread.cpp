#include "platform/linux/gpu/completion_thread.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace vantor::vulkan {

CompletionThread::CompletionThread(std::shared_ptr<Context> context)
    : context_(std::move(context)), thread_([this] { run(); }) {}

CompletionThread::~CompletionThread() {
    // An entry that nobody awaits ends the thread.
    ring_[written_++ % kCapacity] = {};
    ready_.release();
    thread_.join();
}

void CompletionThread::notify(std::uint64_t point, std::shared_ptr<Awaiting> awaiting) {
    if (written_ - taken_.load(std::memory_order_acquire) >= kCapacity - 1) {
        std::fputs("more work is under way than a thousand pictures make\n", stderr);
        std::abort();
    }
    ring_[written_++ % kCapacity] = {point, std::move(awaiting)};
    ready_.release();
}

void CompletionThread::run() {
    for (std::uint64_t next = 0;; ++next) {
        ready_.acquire();
        const Entry entry = std::exchange(ring_[next % kCapacity], {});
        taken_.store(next + 1, std::memory_order_release);
        if (entry.awaiting == nullptr) {
            return;
        }
        // A lost device never gets there; the picture is then shown as it is.
        static_cast<void>(context_->wait(entry.point));
        entry.awaiting->finished();
    }
}

} // namespace vantor::vulkan
