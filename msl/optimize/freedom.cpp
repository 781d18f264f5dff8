#include "msl/optimize/freedom.h"

#include <spirv/unified1/GLSL.std.450.h>

namespace msl::ir {

Freedom::Freedom(const Module& module)
    : module_(module), readOnly_(module.instructions.size(), false) {
    for (const auto& item : module.globals) {
        readOnly_[item.variable] = item.readOnly;
    }
}

void Freedom::enter(const Function& function) {
    writesBuffers_ = false;
    for (const BlockId id : function.layout) {
        for (Value value = module_.blocks[id].first; value != kNoValue && !writesBuffers_;
             value = module_.instructions[value].next) {
            const auto& instruction = module_.instructions[value];
            if (info(instruction.op).sideEffect && instruction.op != Op::imageWrite) {
                const Value pointer = module_.operandsOf(instruction)[0];
                writesBuffers_ = module_.typeOf(pointer).storage == Storage::buffer;
            }
        }
    }
}

// Inputs, resources, tables of constants, and buffers where the function writes none.
bool Freedom::isConstantMemory(Value pointer) const {
    switch (module_.typeOf(pointer).storage) {
    case Storage::input:
    case Storage::resource:
    case Storage::privateData:
        return true;
    case Storage::buffer: {
        Value root = pointer;
        while (module_.instructions[root].op == Op::accessChain) {
            root = module_.operands[module_.instructions[root].firstOperand];
        }
        return !writesBuffers_ && readOnly_[root];
    }
    default:
        return false;
    }
}

bool Freedom::isFree(const Instruction& instruction) const {
    switch (instruction.op) {
    case Op::load:
        return isConstantMemory(module_.operands[instruction.firstOperand]);
    case Op::extended:
        return instruction.extra < GLSLstd450InterpolateAtCentroid ||
               instruction.extra > GLSLstd450InterpolateAtOffset;
    case Op::accessChain:
        return true;
    default:
        return instruction.op >= Op::fAdd && instruction.op <= Op::bitFieldUExtract &&
               instruction.op != Op::store;
    }
}

bool Freedom::isSafeAnywhere(const Instruction& instruction) const {
    switch (instruction.op) {
    case Op::sDiv:
    case Op::uDiv:
    case Op::sRem:
    case Op::uMod:
    case Op::extractDynamic:
    case Op::insertDynamic:
    case Op::accessChain:
    case Op::load:
    case Op::bitFieldInsert:
    case Op::bitFieldSExtract:
    case Op::bitFieldUExtract:
        return false;
    default:
        return true;
    }
}

} // namespace msl::ir
