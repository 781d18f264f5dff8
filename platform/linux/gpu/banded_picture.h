#pragma once
// A picture that is drawn in bands, each given to the device when the one before is done, so that
// other pictures come in between.

#include "platform/linux/gpu/completion_thread.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace vantor::vulkan {

class BandedPicture : public Awaiting {
  public:
    /// `shown` is told when the last band is done.
    BandedPicture(std::shared_ptr<Context> context, std::vector<VkCommandBuffer> bands,
                  std::shared_ptr<Awaiting> shown)
        : context_(std::move(context)), bands_(std::move(bands)), shown_(std::move(shown)) {}

    /// Submits the first band; gives its point, or 0 when the device is lost.
    std::uint64_t start();
    /// Whether no band is left to be submitted. Any thread.
    bool isSubmitted() const;
    /// Of the last band that was submitted. Any thread.
    std::uint64_t point() const;
    /// No further band is submitted: their command buffers go. Any thread.
    void cancel();

    std::uint64_t finished(double seconds) override;

  private:
    std::uint64_t submitNext();

    std::shared_ptr<Context> context_;
    const std::vector<VkCommandBuffer> bands_;
    std::shared_ptr<Awaiting> shown_;
    double seconds_ = 0;
    /// Guards what follows.
    mutable std::mutex mutex_;
    std::size_t next_ = 0;
    std::uint64_t point_ = 0;
};

} // namespace vantor::vulkan
