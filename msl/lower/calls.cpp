#include <spirv/unified1/GLSL.std.450.h>

#include "msl/lower/depth.h"
#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

void Lowerer::bindParameter(Frame& frame, const tree::Variable& parameter,
                            const tree::Expr* argument) {
    auto& binding = frame.slots[parameter.slot];
    if (parameter.type->holdsResources()) {
        Binding* named = parameter.isReference ? findBinding(argument) : nullptr;
        if (named != nullptr) {
            binding.kind = Binding::Kind::alias;
            binding.target = named;
        } else {
            binding = bound(parameter.type, argument);
        }
        if (parameter.isMoved) {
            startMoving(binding);
        }
        return;
    }
    if (!parameter.isReference) {
        binding = bound(parameter.type, argument);
        return;
    }
    binding.kind = Binding::Kind::place;
    binding.place = place(argument);
    const bool whole = binding.place.root == Place::Root::ssa && binding.place.steps.empty() &&
                       binding.place.swizzleCount == 0;
    // A constant reference is read as if it were a copy, unless copying costs.
    if (parameter.isConst && parameter.space == AddressSpace::thread && !whole &&
        !isMemoryType(parameter.type)) {
        binding.kind = Binding::Kind::ssa;
        binding.ssa = newVariable(ir::kNoValue);
        setVariable(binding.ssa, load(binding.place));
    }
}

// Expands the called function in place. `target`, where wanted, receives the place that the
// function refers to with its result, and `parts` a result that holds resources.
Lowerer::Value Lowerer::call(const tree::Expr* expr, Place* target, Binding* parts) {
    const tree::Function& function = *expr->function;
    const auto nothing = [&] {
        return expr->type->isVoid() || expr->type->holdsResources()
                   ? ir::kNoValue
                   : builder_.undefined(irType(expr->type));
    };
    if (function.body == nullptr) {
        error(expr->range, "the function '" + std::string(function.name->text) +
                               "' is declared and called but never defined");
        diagnostics_.note(function.range, "it is declared here");
        return nothing();
    }
    if (function.active) {
        error(expr->range, "the function '" + std::string(function.name->text) +
                               "' calls itself, which shaders cannot do");
        stopped_ = true;
        return nothing();
    }
    Frame frame;
    frame.function = &function;
    frame.slots.resize(function.variableCount);
    if (function.self != nullptr && expr->a != nullptr) {
        bindParameter(frame, *function.self, expr->a);
    }
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        bindParameter(frame, *function.parameters[i], expr->items[i]);
    }
    frame.flag = newVariable(ir::kNoValue);
    setVariable(frame.flag, builder_.boolConstant(false));
    frame.result = newVariable(ir::kNoValue);
    frame.resultChoice = newVariable(ir::kNoValue);
    setVariable(frame.resultChoice, builder_.intConstant(0));
    const bool hasParts = expr->type->holdsResources() && !function.returnsReference;
    const bool hasResult =
        !expr->type->isVoid() && !function.constructor && !function.returnsReference && !hasParts;
    frame.resultPlace.type = expr->type;
    if (hasResult) {
        setVariable(frame.result, builder_.undefined(irType(expr->type)));
    }
    Frame* const caller = frame_;
    function.active = true;
    frame_ = &frame;
    statement(function.body);
    Value result = ir::kNoValue;
    if (function.returnsReference) {
        if (frame.resultPlace.root == Place::Root::chosen &&
            frame.resultPlace.base == ir::kNoValue) {
            frame.resultPlace.base = module_.resolve(current_[frame.resultChoice]);
        }
        if (target != nullptr) {
            *target = std::move(frame.resultPlace);
        } else {
            result = load(frame.resultPlace);
        }
    } else if (hasParts) {
        if (parts != nullptr) {
            *parts = function.constructor ? std::move(frame.slots[function.self->slot])
                                          : std::move(frame.resultParts);
        }
    } else if (hasResult) {
        result = module_.resolve(current_[frame.result]);
    } else if (function.constructor && function.self != nullptr) {
        const auto& self = frame.slots[function.self->slot];
        if (self.kind == Binding::Kind::ssa) {
            result = module_.resolve(current_[self.ssa]);
        } else if (self.kind == Binding::Kind::place) {
            result = load(self.place);
        }
    }
    frame_ = caller;
    function.active = false;
    if (!builder_.open()) {
        // Every way through the function discards the fragment; what follows is never reached.
        builder_.start(*function_, builder_.makeBlock());
    }
    return result != ir::kNoValue ? result : nothing();
}

Lowerer::Value Lowerer::library(const tree::Expr* expr) {
    const auto& function = *expr->library;
    if (expr->a != nullptr && expr->a->type->isTexture()) {
        return texture(expr);
    }
    if (function.special == Special::atomic) {
        return atomic(expr);
    }
    const ir::TypeId wanted = irType(expr->type);
    if (function.special == Special::discard) {
        if (stage_ != Stage::fragment) {
            error(expr->range, "'discard_fragment' is for fragment functions");
        }
        builder_.terminate(ir::Terminator::discard);
        return ir::kNoValue;
    }
    const bool written = function.signature.find_first_of("RJ") != std::string_view::npos;
    std::vector<Value> x;
    for (size_t i = 0; i < expr->items.size(); ++i) {
        const bool output = written && i + 1 == expr->items.size();
        x.push_back(output ? ir::kNoValue : value(expr->items[i]));
    }
    switch (function.lowering) {
    case Lowering::operation: {
        const Op op = static_cast<Op>(function.floatCode);
        if ((op == Op::dpdx || op == Op::dpdy || op == Op::fwidth) && stage_ != Stage::fragment) {
            error(expr->range, "derivatives are for fragment functions");
            return builder_.undefined(wanted);
        }
        if (op == Op::dot && expr->items[0]->type->isScalar()) {
            return builder_.binary(Op::fMul, wanted, x[0], x[1]);
        }
        return x.size() == 1 ? builder_.unary(op, wanted, x[0])
                             : builder_.binary(op, wanted, x[0], x[1]);
    }
    case Lowering::extended:
        switch (x.size()) {
        case 1:
            return builder_.extended(function.floatCode, wanted, {x[0]});
        case 2:
            return builder_.extended(function.floatCode, wanted, {x[0], x[1]});
        default:
            return builder_.extended(function.floatCode, wanted, {x[0], x[1], x[2]});
        }
    case Lowering::special:
        break;
    }
    return special(expr, x);
}

} // namespace msl
