#include <algorithm>

#include "msl/lower/attributes.h"
#include "msl/lower/lower.h"

namespace msl {

void Lowerer::run(const tree::Unit& unit, Module& result) {
    unit_ = &unit;
    globals_.resize(unit.globalCount);
    for (const auto* function : unit.entryPoints) {
        if (stopped_ || diagnostics_.exhausted()) {
            break;
        }
        entryPoint(*function, result);
    }
    result.constants = unit.constants;
    result.usesInt64 = usesInt64_;
    result.usesSubgroups = usesSubgroups_;
}

void Lowerer::useGlobal(Value variable) {
    auto& used = function_->interface;
    if (std::find(used.begin(), used.end(), variable) == used.end()) {
        used.push_back(variable);
    }
}

Lowerer::Value Lowerer::interfaceVariable(ir::TypeId type, ir::Global global) {
    global.variable = builder_.variable(type, global.storage, nullptr);
    module_.globals.push_back(global);
    useGlobal(global.variable);
    return global.variable;
}

void Lowerer::entryPoint(const tree::Function& function, Module& result) {
    module_.functions.emplace_back();
    function_ = &module_.functions.back();
    function_->name = std::string(function.name->text);
    stage_ = function.stage == ast::FunctionStage::vertex ? Stage::vertex : Stage::fragment;
    function_->stage = stage_;
    function_->earlyTests =
        findAttribute(function.syntax->attributes, "early_fragment_tests") != nullptr;
    hoisted_.clear();
    log_.clear();
    constantSamplers_.clear();
    usedSamplers_.clear();
    EntryPoint entry;
    entry.name = function_->name;
    entry.stage = stage_;
    Frame frame;
    frame.function = &function;
    frame.slots.resize(function.variableCount);
    frame_ = &frame;
    prologue_ = builder_.makeBlock();
    builder_.start(*function_, prologue_);
    bool good = true;
    for (const auto* parameter : function.parameters) {
        good = entryParameter(*parameter, frame.slots[parameter->slot], entry) && good;
    }
    const ir::BlockId body = builder_.makeBlock();
    builder_.branch(body);
    builder_.start(*function_, body);
    for (const auto* parameter : function.parameters) {
        if (parameter->isMoved) {
            startMoving(frame.slots[parameter->slot]);
        }
    }
    frame.flag = newVariable(builder_.boolConstant(false));
    frame.result = newVariable(ir::kNoValue);
    frame.resultChoice = newVariable(builder_.intConstant(0));
    if (!function.result->isVoid()) {
        current_[frame.result] = builder_.undefined(irType(function.result));
    }
    if (good) {
        function.active = true;
        statement(function.body);
        function.active = false;
        if (builder_.open()) {
            good = storeResult(function);
        }
        builder_.terminate(ir::Terminator::leave);
    }
    frame_ = nullptr;
    for (const uint32_t index : usedSamplers_) {
        entry.constantSamplers.push_back({kConstantSamplerBinding + index, unit_->samplers[index]});
    }
    result.entryPoints.push_back(std::move(entry));
}

} // namespace msl
