// Writes a module of the intermediate form as SPIR-V words. Values that nothing uses are left out.
#pragma once

#include <cstdint>
#include <vector>

#include "msl/ir/ir.h"

namespace msl {

std::vector<uint32_t> emitSpirv(const ir::Module& module);

} // namespace msl
