#pragma once
// What a configuration says about an output. Any thread.

#include "agent/configuration/configuration.h"
#include "agent/output/output.h"

namespace vantor::agent {

/// Of the rules that match the output, the first that says something counts, for each setting by
/// itself; where none does, the configuration as a whole.
OutputSettings settingsFor(const Configuration& configuration, const OutputDescription& output);

} // namespace vantor::agent
