#pragma once
// Outputs without a display server: pictures in memory, at a rate of their own. Main thread.

#include "agent/output/output.h"
#include "platform/linux/main_loop.h"

#include <memory>
#include <span>

namespace vantor::agent {

std::unique_ptr<OutputBackend>
makeHeadless(MainLoop& loop, std::span<const OutputDescription> outputs, OutputEvents events);

} // namespace vantor::agent
