#pragma once
// Media time on Linux.

#include "platform/media_clock.h"

namespace vantor {

class LinuxMediaClock : public MediaClock {
  public:
    double now() const override;
};

} // namespace vantor
