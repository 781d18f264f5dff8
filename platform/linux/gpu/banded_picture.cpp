#include "platform/linux/gpu/banded_picture.h"

#include <utility>

namespace vantor::vulkan {

std::uint64_t BandedPicture::start() { return submitNext(); }

std::uint64_t BandedPicture::submitNext() {
    const std::lock_guard lock(mutex_);
    if (next_ == bands_.size()) {
        return 0;
    }
    const std::uint64_t point = context_->submit(bands_[next_]);
    next_ = point != 0 ? next_ + 1 : bands_.size();
    point_ = point != 0 ? point : point_;
    return point;
}

bool BandedPicture::isSubmitted() const {
    const std::lock_guard lock(mutex_);
    return next_ == bands_.size();
}

std::uint64_t BandedPicture::point() const {
    const std::lock_guard lock(mutex_);
    return point_;
}

void BandedPicture::cancel() {
    const std::lock_guard lock(mutex_);
    next_ = bands_.size();
}

std::uint64_t BandedPicture::finished(double seconds) {
    seconds_ += seconds;
    if (const std::uint64_t point = submitNext(); point != 0) {
        return point;
    }
    std::exchange(shown_, nullptr)->finished(seconds_);
    return 0;
}

} // namespace vantor::vulkan
