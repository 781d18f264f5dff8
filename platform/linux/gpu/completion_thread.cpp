#include "platform/linux/gpu/completion_thread.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

namespace vantor::vulkan {

CompletionThread::CompletionThread(std::shared_ptr<Context> context, double (*clock)())
    : context_(std::move(context)), clock_(clock), thread_([this] { run(); }) {}

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
    ring_[written_++ % kCapacity] = {point, clock_(), std::move(awaiting)};
    ready_.release();
}

void CompletionThread::run() {
    std::uint64_t taken = 0;
    std::optional<Entry> head;
    // Work that goes on: empty for ordinary pictures.
    std::vector<Entry> continued;
    double idleSince = 0;
    while (true) {
        if (!head && (continued.empty() ? (ready_.acquire(), true) : ready_.try_acquire())) {
            head = std::exchange(ring_[taken % kCapacity], {});
            taken_.store(++taken, std::memory_order_release);
            if (head->awaiting == nullptr) {
                return;
            }
        }
        // The device works in the order of the points.
        const auto earliest = std::min_element(
            continued.begin(), continued.end(),
            [](const Entry& one, const Entry& other) { return one.point < other.point; });
        Entry entry;
        if (head && (earliest == continued.end() || head->point < earliest->point)) {
            entry = *std::exchange(head, std::nullopt);
        } else {
            entry = std::move(*earliest);
            continued.erase(earliest);
        }
        // A lost device never gets there; the picture is then shown as it is.
        static_cast<void>(context_->wait(entry.point));
        const double now = clock_();
        const double seconds = now - std::max(entry.since, std::exchange(idleSince, now));
        if (const std::uint64_t point = entry.awaiting->finished(seconds); point != 0) {
            continued.push_back({point, now, std::move(entry.awaiting)});
        }
    }
}

} // namespace vantor::vulkan
