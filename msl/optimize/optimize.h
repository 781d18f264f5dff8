// Improves the intermediate form after lowering. The builder has folded constants already.
#pragma once

#include "msl/ir/ir.h"

namespace msl {

void optimize(ir::Module& module);

} // namespace msl
