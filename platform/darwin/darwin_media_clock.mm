#include "platform/darwin/darwin_media_clock.h"

#import <QuartzCore/QuartzCore.h>

namespace vantor::darwin {

double DarwinMediaClock::now() const { return CACurrentMediaTime(); }

} // namespace vantor::darwin
