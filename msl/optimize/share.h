// Equal values are computed once: an instruction gives way to an equal one that stands on every way
// to it, and a phi to the one value that all its ways bring.
#pragma once

#include "msl/optimize/flow.h"
#include "msl/optimize/freedom.h"

namespace msl::ir {

// What gives way is noted in Module::replaced and stays in its block.
void shareEqualValues(Module& module, const Function& function, const Flow& flow,
                      const Freedom& freedom);

} // namespace msl::ir
