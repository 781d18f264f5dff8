// Resources that are chosen at run time. A choice among bindings is carried along until a texture
// is asked something; there every candidate gets its own copy of the operation.
#include <spirv/unified1/GLSL.std.450.h>

#include "msl/lower/lower.h"

namespace msl {

using ir::Op;
using tree::ExprKind;
namespace TextureItem = tree::TextureItem;

// One of the bindings; which one, `selector` says.
Lowerer::Binding* Lowerer::choice(std::vector<Binding> candidates, Value selector) {
    // Choices live until the module is done, so they are paid for by their size.
    constexpr uint32_t kStepsPerCandidate = 8;
    steps_ += kStepsPerCandidate * static_cast<uint32_t>(candidates.size());
    Binding made;
    made.kind = Binding::Kind::choice;
    made.parts = std::move(candidates);
    made.selector = selector;
    choices_.push_back(std::move(made));
    return &choices_.back();
}

// An element of an array of resources, by an index that is known at run time only.
Lowerer::Binding* Lowerer::chosenElement(const Binding& array, Value index) {
    const auto last = static_cast<uint32_t>(array.parts.size() - 1);
    return choice(array.parts,
                  builder_.extended(GLSLstd450UMin, ir::kInt, {index, builder_.intConstant(last)}));
}

// The same part of every candidate.
Lowerer::Binding* Lowerer::chosenPart(const Binding& whole, uint64_t index) {
    std::vector<Binding> parts;
    for (const auto& candidate : whole.parts) {
        const Binding* part = nullptr;
        if (candidate.kind == Binding::Kind::choice) {
            part = chosenPart(candidate, index);
        } else if (candidate.kind == Binding::Kind::parts && index < candidate.parts.size()) {
            part = &candidate.parts[index];
        }
        if (part == nullptr) {
            return nullptr;
        }
        parts.push_back(*part);
    }
    return choice(std::move(parts), whole.selector);
}

// condition ? a : b, where the two hold resources.
Lowerer::Binding* Lowerer::chosenBranch(const tree::Expr* expr) {
    const Value condition = value(expr->a);
    if (const auto known = builder_.scalarBits(condition)) {
        return findBinding(*known != 0 ? expr->b : expr->c);
    }
    std::vector<Binding> candidates;
    for (const auto* branch : {expr->b, expr->c}) {
        candidates.push_back(bound(branch->type, branch));
    }
    return choice(
        std::move(candidates),
        builder_.select(ir::kInt, condition, builder_.intConstant(0), builder_.intConstant(1)));
}

// Does the work for the option that the selector names; gives what it gave, where it gives
// anything.
Lowerer::Value Lowerer::onEachOption(Value selector, size_t count, bool gives,
                                     const std::function<Value(size_t)>& work) {
    const ir::BlockId after = builder_.makeBlock();
    std::vector<ir::BlockId> blocks;
    std::vector<ir::Case> cases;
    for (uint32_t i = 0; i < count; ++i) {
        blocks.push_back(builder_.makeBlock());
        if (i > 0) {
            cases.push_back({i, blocks[i]});
        }
    }
    const size_t mark = log_.size();
    const uint32_t result = newVariable(ir::kNoValue);
    std::vector<Edge> edges;
    builder_.selectionMerge(after);
    builder_.multiway(selector, blocks[0], cases);
    for (size_t i = 0; i < count; ++i) {
        builder_.start(*function_, blocks[i]);
        const Value given = work(i);
        if (gives) {
            setVariable(result, given);
        }
        edges.push_back(edge(mark));
        builder_.branch(after);
        rollBack(mark);
    }
    merge(after, edges);
    return gives ? module_.resolve(current_[result]) : ir::kNoValue;
}

// The place that is one of several.
Lowerer::Place Lowerer::chosenPlace(std::vector<Place> options, Value selector) {
    Place result;
    result.root = Place::Root::chosen;
    result.base = selector;
    result.rootType = result.type = options.front().type;
    result.constantSpace = options.front().constantSpace;
    result.options = std::move(options);
    return result;
}

// What is no resource is read from every candidate.
Lowerer::Value Lowerer::chosenValue(const Type* type, const Binding& chosen) {
    Value result = ir::kNoValue;
    for (uint32_t i = 0; i < chosen.parts.size(); ++i) {
        const Value held = load(bindingPlace(type, chosen.parts[i]));
        result =
            i == 0 ? held : builder_.select(irType(type), isWord(chosen.selector, i), held, result);
    }
    return result;
}

// The choice that an operand of a texture's operation names, unless that has been settled.
const Lowerer::Binding* Lowerer::openChoice(const tree::Expr* operand, const Binding* settled) {
    if (operand == nullptr || settled != nullptr) {
        return settled != nullptr && settled->kind == Binding::Kind::choice ? settled : nullptr;
    }
    if (operand->kind == ExprKind::variable && operand->variable->samplerIndex != UINT32_MAX) {
        return nullptr;
    }
    const Binding* binding = findBinding(operand);
    return binding != nullptr && binding->kind == Binding::Kind::choice ? binding : nullptr;
}

// The operation on each candidate; `settled` says inside which of them it is.
Lowerer::Value Lowerer::onEachCandidate(const tree::Expr* expr, const Binding& chosen,
                                        const Binding*& settled) {
    // Every operand is evaluated once, and the derivatives where all fragments still are together.
    const bool outermost = held_.empty();
    for (size_t i = TextureItem::coordinate; i < expr->items.size(); ++i) {
        if (const auto* item = expr->items[i]; item != nullptr && !held_.contains(item)) {
            held_.emplace(item, value(item));
        }
    }
    const auto* coordinate = expr->items[TextureItem::coordinate];
    if (outermost && stage_ == Stage::fragment && coordinate != nullptr &&
        coordinate->type->scalar()->isFloating()) {
        const Value at = value(coordinate);
        const ir::TypeId type = builder_.typeOf(at);
        gradients_ = {builder_.unary(Op::dpdx, type, at), builder_.unary(Op::dpdy, type, at)};
    }
    const Value result =
        onEachOption(chosen.selector, chosen.parts.size(), !expr->type->isVoid(), [&](size_t i) {
            settled = &chosen.parts[i];
            return texture(expr);
        });
    settled = nullptr;
    if (outermost) {
        held_.clear();
        gradients_.reset();
    }
    return result;
}

} // namespace msl
