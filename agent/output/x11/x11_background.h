#pragma once
// The desktop background of an X server: a window below all others on each of its monitors, under a
// window manager or without one.

#include "agent/output/output.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <memory>
#include <string>

namespace vantor::agent {

/// On the server that DISPLAY names; a monitor's connector is its name in RandR. Only `ended` may
/// destroy the backend from within an event. Failure gives a sentence.
Result<std::unique_ptr<OutputBackend>, std::string> makeX11Background(MainLoop& loop,
                                                                      OutputEvents events);

} // namespace vantor::agent
