#include "platform/darwin/darwin_system.h"

#import <QuartzCore/QuartzCore.h>

namespace vantor::darwin {

double DarwinMediaClock::now() const { return CACurrentMediaTime(); }

} // namespace vantor::darwin
