#pragma once

#include "platform/media_clock.h"

namespace vantor::darwin {

/// CACurrentMediaTime.
class DarwinMediaClock : public MediaClock {
  public:
    double now() const override;
};

} // namespace vantor::darwin
