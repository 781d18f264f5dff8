#pragma once
// Work for a connection's thread.

#include "platform/linux/file_descriptor.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <sys/eventfd.h>
#include <utility>
#include <vector>

namespace vantor::xpc {

/// Outlives the connection, whose thread may end at any moment.
class Mailbox {
  public:
    Mailbox() : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    /// Readable while there is work.
    int descriptor() const { return wake_.get(); }

    /// Any thread. False, and nothing done, once the mailbox is closed.
    bool post(std::function<void()> work) {
        {
            const std::scoped_lock guard(lock_);
            if (closed_) {
                return false;
            }
            posted_.push_back(std::move(work));
        }
        waiting_ = true;
        eventfd_write(wake_.get(), 1);
        return true;
    }

    /// All that was posted, in order. Costs next to nothing while that is nothing.
    std::vector<std::function<void()>> take() {
        if (!waiting_.exchange(false)) {
            return {};
        }
        eventfd_t count = 0;
        eventfd_read(wake_.get(), &count);
        std::vector<std::function<void()>> work;
        const std::scoped_lock guard(lock_);
        work.swap(posted_);
        return work;
    }

    /// Takes nothing more; gives what was still to be taken.
    std::vector<std::function<void()>> close() {
        std::vector<std::function<void()>> left;
        const std::scoped_lock guard(lock_);
        closed_ = true;
        left.swap(posted_);
        return left;
    }

  private:
    FileDescriptor wake_;
    std::atomic<bool> waiting_ = false;
    /// Guards `posted_` and `closed_`.
    std::mutex lock_;
    std::vector<std::function<void()>> posted_;
    bool closed_ = false;
};

} // namespace vantor::xpc
