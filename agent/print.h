#pragma once

#include "agent/run_status.h"

#include <string_view>

namespace vantor::agent {

/// Writes to standard output; done once all of it is written.
RunStatus print(std::string_view text);

} // namespace vantor::agent
