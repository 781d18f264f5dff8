#pragma once
// The moments at which an output takes a frame, for display servers that announce none: the points
// of a regular grid. Main thread.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/main_loop.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace vantor::agent {

/// Fires once for each time that it is asked; between those nothing wakes. Asking allocates
/// nothing.
class RefreshTimer {
  public:
    /// Without a descriptor to be had it never fires.
    RefreshTimer(MainLoop& loop, double hertz, std::function<void()> due);

    /// What is not between 1 and 1000 is taken for 60.
    void setRate(double hertz);
    /// `due` at the next point of the grid. Nothing changes when it is awaited already.
    void request();
    void cancel();

  private:
    void fired();

    std::function<void()> due_;
    FileDescriptor timer_;
    std::unique_ptr<DescriptorWatch> watch_;
    /// Nanoseconds of CLOCK_MONOTONIC.
    std::int64_t origin_;
    std::int64_t interval_ = 0;
    bool isAwaited_ = false;
};

} // namespace vantor::agent
