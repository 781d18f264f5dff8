// Structs that hold textures, samplers, pointers or references. They are dissolved: each part is
// bound by itself, and no value of such a type exists in the intermediate form.
#include "msl/lower/lower.h"

namespace msl {

using tree::ExprKind;

// A new variable of the value.
Lowerer::Binding Lowerer::boundValue(const Type* type, Value held) {
    Binding binding;
    if (isMemoryType(type)) {
        binding.kind = Binding::Kind::place;
        binding.place = newMemory(type);
        if (held != ir::kNoValue) {
            store(binding.place, held);
        }
        return binding;
    }
    binding.kind = Binding::Kind::ssa;
    binding.ssa = newVariable(ir::kNoValue);
    setVariable(binding.ssa, held != ir::kNoValue ? held : builder_.undefined(irType(type)));
    return binding;
}

// A new variable of the type, initialised where `init` says with what.
Lowerer::Binding Lowerer::bound(const Type* type, const tree::Expr* init) {
    const bool missing = init == nullptr || init->kind == ExprKind::zero;
    if (!type->holdsResources()) {
        return boundValue(type, init != nullptr ? value(init) : ir::kNoValue);
    }
    Binding binding;
    if (type->isPointer()) {
        if (!missing) {
            binding.kind = Binding::Kind::place;
            binding.place = pointerTarget(init);
        }
        return binding;
    }
    if (!missing && type->isResource()) {
        const Binding* named = samplerIndex(init) == UINT32_MAX ? findBinding(init) : nullptr;
        if (named != nullptr && named->kind == Binding::Kind::choice) {
            return *named;
        }
    }
    if (type->isTexture()) {
        if (!missing) {
            binding.kind = Binding::Kind::texture;
            binding.resource = textureResource(init);
        }
        return binding;
    }
    if (type->isSampler()) {
        if (!missing) {
            binding.kind = Binding::Kind::sampler;
            binding.resource = samplerResource(init);
            binding.samplerIndex = samplerIndex(init);
        }
        return binding;
    }
    return boundParts(type, init);
}

Lowerer::Binding Lowerer::boundParts(const Type* type, const tree::Expr* init) {
    Binding binding;
    binding.kind = Binding::Kind::parts;
    const size_t count = type->isArray() ? type->length : type->structure->fields.size();
    const auto part = [&](size_t i) {
        return type->isArray() ? type->element : type->structure->fields[i].type;
    };
    if (init == nullptr || init->kind == ExprKind::zero) {
        for (size_t i = 0; i < count; ++i) {
            binding.parts.push_back(init == nullptr || part(i)->holdsResources()
                                        ? bound(part(i), nullptr)
                                        : boundValue(part(i), zeroOf(part(i))));
        }
        return binding;
    }
    if (init->kind == ExprKind::construct) {
        for (size_t i = 0; i < count; ++i) {
            binding.parts.push_back(bound(part(i), init->items[i]));
        }
        return binding;
    }
    if (init->kind == ExprKind::call && !init->function->returnsReference) {
        Binding result;
        call(init, nullptr, &result);
        return result;
    }
    if (init->kind == ExprKind::comma) {
        value(init->a);
        return boundParts(type, init->b);
    }
    if (const Binding* source = findBinding(init)) {
        return copied(type, *source);
    }
    error(init->range,
          "which resources this '" + toText(type) + "' holds is not known when compiling");
    return boundParts(type, nullptr);
}

// The parts of another variable in new ones.
Lowerer::Binding Lowerer::copied(const Type* type, const Binding& source) {
    if (!type->holdsResources()) {
        return boundValue(type, load(bindingPlace(type, source)));
    }
    if (source.kind != Binding::Kind::parts) {
        return source;
    }
    Binding binding;
    binding.kind = Binding::Kind::parts;
    for (size_t i = 0; i < source.parts.size(); ++i) {
        binding.parts.push_back(copied(
            type->isArray() ? type->element : type->structure->fields[i].type, source.parts[i]));
    }
    return binding;
}

// What an expression that names a variable, or a part of one that holds resources, stands for.
Lowerer::Binding* Lowerer::findBinding(const tree::Expr* expr) {
    Binding* found = nullptr;
    switch (expr->kind) {
    case ExprKind::variable:
        if (expr->variable->kind != tree::VariableKind::global) {
            found = &frame_->slots[expr->variable->slot];
        }
        break;
    case ExprKind::field:
    case ExprKind::index: {
        if (expr->a->type->isPointer()) {
            return builder_.isSplatOf(value(expr->b), 0) ? findBinding(expr->a) : nullptr;
        }
        Binding* base = findBinding(expr->a);
        if (base == nullptr ||
            (base->kind != Binding::Kind::parts && base->kind != Binding::Kind::choice)) {
            return nullptr;
        }
        uint64_t index = expr->index;
        if (expr->kind == ExprKind::index) {
            const Value at = value(expr->b);
            const auto known = builder_.scalarBits(at);
            if (!known && base->kind == Binding::Kind::parts) {
                return chosenElement(*base, at);
            }
            index = known ? *known : UINT64_MAX;
        }
        if (base->kind == Binding::Kind::choice) {
            return chosenPart(*base, index);
        }
        found = index < base->parts.size() ? &base->parts[index] : nullptr;
        break;
    }
    case ExprKind::deref:
        return expr->a->kind == ExprKind::addressOf ? findBinding(expr->a->a)
                                                    : findBinding(expr->a);
    case ExprKind::addressOf:
        return findBinding(expr->a);
    case ExprKind::conditional:
        return chosenBranch(expr);
    default:
        break;
    }
    while (found != nullptr && found->kind == Binding::Kind::alias) {
        found = found->target;
    }
    return found;
}

Lowerer::Place Lowerer::bindingPlace(const Type* type, const Binding& binding) {
    if (binding.kind == Binding::Kind::place) {
        return binding.place;
    }
    if (binding.kind == Binding::Kind::choice) {
        return valuePlace(type, chosenValue(type, binding));
    }
    if (binding.kind != Binding::Kind::ssa) {
        return valuePlace(type, builder_.undefined(irType(type)));
    }
    Place result;
    result.root = Place::Root::ssa;
    result.base = binding.ssa;
    result.rootType = result.type = type;
    return result;
}

bool Lowerer::sameResource(const Binding& a, const Binding& b) const {
    const auto sameSteps = [](const Place& x, const Place& y) {
        if (x.steps.size() != y.steps.size()) {
            return false;
        }
        for (size_t i = 0; i < x.steps.size(); ++i) {
            if (x.steps[i].dynamic != y.steps[i].dynamic || x.steps[i].index != y.steps[i].index) {
                return false;
            }
        }
        return true;
    };
    return a.kind == b.kind && a.resource == b.resource && a.place.root == b.place.root &&
           a.place.base == b.place.base && a.place.offset == b.place.offset &&
           a.place.address == b.place.address && sameSteps(a.place, b.place);
}

void Lowerer::assignParts(const Type* type, Binding& target, const Binding& source, Range range) {
    if (!type->holdsResources()) {
        store(bindingPlace(type, target), load(bindingPlace(type, source)));
        return;
    }
    if (source.kind == Binding::Kind::parts && target.kind == Binding::Kind::parts) {
        for (size_t i = 0; i < target.parts.size(); ++i) {
            assignParts(type->isArray() ? type->element : type->structure->fields[i].type,
                        target.parts[i], source.parts[i], range);
        }
        return;
    }
    if (source.kind == Binding::Kind::none) {
        return;
    }
    if (target.kind != Binding::Kind::none && !sameResource(target, source)) {
        error(range, "this '" + toText(type) +
                         "' already stands for another one; which of the two is used cannot be "
                         "known when compiling");
        return;
    }
    const uint32_t moved = target.moved;
    target = source;
    target.moved = moved;
    if (moved != UINT32_MAX) {
        setVariable(moved, builder_.intConstant(0));
    }
}

} // namespace msl
