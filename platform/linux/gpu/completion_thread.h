#pragma once
// The one thread that waits for the GPU. It learns that work is done and says so to whoever
// awaits it; nobody else waits.

#include "platform/linux/gpu/vulkan_context.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <semaphore>
#include <thread>

namespace vantor::vulkan {

/// Something that goes on when the GPU has finished its work, most often a picture.
class Awaiting {
  public:
    virtual ~Awaiting() = default;
    /// On the completion thread, which every picture waits for: what a steady frame does here
    /// allocates nothing and takes no lock.
    /// `seconds` is what the device spent on it. Gives the point of more work of the same to wait
    /// for, or 0.
    virtual std::uint64_t finished(double seconds) = 0;
};

class CompletionThread {
  public:
    /// Entries that can be under way at once; far more than drawables exist.
    static constexpr std::size_t kCapacity = 1024;

    /// `clock` gives seconds of a clock that never goes back.
    CompletionThread(std::shared_ptr<Context> context, double (*clock)());
    /// Waits for what is under way.
    ~CompletionThread();
    CompletionThread(const CompletionThread&) = delete;
    CompletionThread& operator=(const CompletionThread&) = delete;

    /// Calls `awaiting->finished(…)` once the point is reached, and keeps it until then: the
    /// thread may be the one that lets go of it. One thread only submits.
    void notify(std::uint64_t point, std::shared_ptr<Awaiting> awaiting);

  private:
    struct Entry {
        std::uint64_t point = 0;
        /// When the work was given to the device.
        double since = 0;
        std::shared_ptr<Awaiting> awaiting{};
    };
    void run();

    std::shared_ptr<Context> context_;
    double (*clock_)();
    // A ring with one writer and one reader: the semaphore counts what the reader may take and
    // publishes it, `taken_` tells the writer what is free again.
    std::array<Entry, kCapacity> ring_;
    std::uint64_t written_ = 0;
    std::atomic<std::uint64_t> taken_ = 0;
    std::counting_semaphore<> ready_{0};
    std::thread thread_;
};

} // namespace vantor::vulkan
