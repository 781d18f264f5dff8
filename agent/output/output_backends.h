#pragma once
// Which outputs a request means.

#include "agent/output/output.h"
#include "agent/run_options.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <memory>
#include <string>

namespace vantor::agent {

/// The error is a sentence: there is no display server, or it does not offer what is needed.
Result<std::unique_ptr<OutputBackend>, std::string> makeOutputs(MainLoop& loop,
                                                                const OutputRequest& request,
                                                                std::uint32_t refreshRate,
                                                                OutputEvents events);

} // namespace vantor::agent
