#pragma once
// Media time: seconds on a clock that never runs backwards.
//   Linux: CLOCK_MONOTONIC.
//   macOS: CACurrentMediaTime.

namespace vantor {

class MediaClock {
  public:
    virtual ~MediaClock() = default;
    virtual double now() const = 0;
};

} // namespace vantor
