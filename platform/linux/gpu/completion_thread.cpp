#include "platform/linux/gpu/completion_thread.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace vantor::vulkan {

CompletionThread::CompletionThread(std::shared_ptr<Context> context)
    : context_(std::move(context)), thread_([this] { run(); }) {}

CompletionThread::~CompletionThread() {
    // An entry without a presentable ends the thread.
    ring_[written_++ % kCapacity] = {};
    ready_.release();
    thread_.join();
}

void CompletionThread::notify(std::uint64_t point, std::shared_ptr<Presentable> presentable) {
    if (written_ - taken_.load(std::memory_order_acquire) >= kCapacity - 1) {
        std::fputs("more pictures are under way than drawables exist\n", stderr);
        std::abort();
    }
    ring_[written_++ % kCapacity] = {point, std::move(presentable)};
    ready_.release();
}

void CompletionThread::run() {
    for (std::uint64_t next = 0;; ++next) {
        ready_.acquire();
        const Entry entry = std::exchange(ring_[next % kCapacity], {});
        taken_.store(next + 1, std::memory_order_release);
        if (entry.presentable == nullptr) {
            return;
        }
        // A lost device never gets there; the picture is then shown as it is.
        static_cast<void>(context_->wait(entry.point));
        entry.presentable->finished();
    }
}

} // namespace vantor::vulkan
