// Calls of the atomic functions, and of those that ask about function constants and textures.
#include <algorithm>

#include "msl/sema/sema.h"

namespace msl {

namespace {

struct AtomicName {
    std::string_view name;
    ir::Op whenSigned;
    ir::Op whenUnsigned;
    size_t values; // besides the object
};

// The Metal Shading Language specification, chapter 6.15.
constexpr AtomicName kAtomics[] = {
    {"atomic_store_explicit", ir::Op::atomicStore, ir::Op::atomicStore, 1},
    {"atomic_load_explicit", ir::Op::atomicLoad, ir::Op::atomicLoad, 0},
    {"atomic_exchange_explicit", ir::Op::atomicExchange, ir::Op::atomicExchange, 1},
    {"atomic_compare_exchange_weak_explicit", ir::Op::atomicCompareExchange,
     ir::Op::atomicCompareExchange, 2},
    {"atomic_fetch_add_explicit", ir::Op::atomicIAdd, ir::Op::atomicIAdd, 1},
    {"atomic_fetch_and_explicit", ir::Op::atomicAnd, ir::Op::atomicAnd, 1},
    {"atomic_fetch_max_explicit", ir::Op::atomicSMax, ir::Op::atomicUMax, 1},
    {"atomic_fetch_min_explicit", ir::Op::atomicSMin, ir::Op::atomicUMin, 1},
    {"atomic_fetch_or_explicit", ir::Op::atomicOr, ir::Op::atomicOr, 1},
    {"atomic_fetch_sub_explicit", ir::Op::atomicISub, ir::Op::atomicISub, 1},
    {"atomic_fetch_xor_explicit", ir::Op::atomicXor, ir::Op::atomicXor, 1},
};

constexpr LibraryFunction kAtomicFunction{
    .name = "atomic", .signature = "", .special = Special::atomic};

} // namespace

// The functions whose arguments are no ordinary values; nothing, with `found` false, where the name
// is none of them.
tree::Expr* Sema::unusualCall(const ast::Expr* expr, std::string_view name, bool& found) {
    found = true;
    const Range range = expr->a->range;
    if (name.starts_with("atomic_")) {
        for (const auto& row : kAtomics) {
            if (row.name == name) {
                return atomicCall(expr, row.whenSigned, row.whenUnsigned, row.values);
            }
        }
    }
    if (name == "is_function_constant_defined" && expr->items.size() == 1) {
        tree::Expr* constant = value(expr->items[0]);
        const auto* init = constant != nullptr && constant->kind == tree::ExprKind::variable
                               ? constant->variable->init
                               : nullptr;
        if (init == nullptr || init->kind != tree::ExprKind::functionConstant) {
            if (constant != nullptr) {
                error(expr->items[0]->range, "this is no function constant");
            }
            return nullptr;
        }
        return functionConstant(boolType(), kFunctionConstantDefined + init->index, range);
    }
    if (name == "is_null_texture" && expr->items.size() == 1) {
        // Vulkan has something bound wherever a shader looks.
        const tree::Expr* texture = value(expr->items[0]);
        return texture == nullptr ? nullptr : constantExpr(boolType(), 0, range);
    }
    found = false;
    return nullptr;
}

tree::Expr* Sema::functionConstant(const Type* type, uint32_t index, Range range) {
    tree::Expr* result = makeExpr(tree::ExprKind::functionConstant, type, range);
    result->index = index;
    return finish(result);
}

// The last one or two arguments name memory orders, of which there is only the relaxed one.
tree::Expr* Sema::atomicCall(const ast::Expr* expr, ir::Op whenSigned, ir::Op whenUnsigned,
                             size_t values) {
    const bool compares = whenSigned == ir::Op::atomicCompareExchange;
    const size_t orders = compares ? 2 : 1;
    const Range range = expr->a->range;
    if (expr->items.size() != 1 + values + orders) {
        error(range, "an atomic function takes the object, its values and a memory order");
        return nullptr;
    }
    for (size_t i = 1 + values; i < expr->items.size(); ++i) {
        const auto* order = expr->items[i];
        if (order->kind != ast::ExprKind::name ||
            order->name->name->text != "memory_order_relaxed") {
            error(order->range, "the memory order of a vertex or fragment function is "
                                "memory_order_relaxed");
            return nullptr;
        }
    }
    tree::Expr* object = value(expr->items[0]);
    if (object == nullptr) {
        return nullptr;
    }
    if (!object->type->isPointer() || !object->type->element->isAtomic() ||
        object->type->space != AddressSpace::device) {
        error(expr->items[0]->range, "an atomic function works on a 'device' atomic, not on '" +
                                         toText(object->type) + "'");
        return nullptr;
    }
    const Type* held = object->type->element->element;
    std::vector<tree::Expr*> items{object};
    for (size_t i = 1; i <= values; ++i) {
        tree::Expr* operand = value(expr->items[i]);
        const Type* wanted =
            compares && i == 1 ? types_.pointer(held, AddressSpace::thread, false) : held;
        operand = operand == nullptr ? nullptr
                                     : convert(operand, wanted, expr->items[i]->range, "the value");
        if (operand == nullptr) {
            return nullptr;
        }
        if (compares && i == 1) {
            noteAssigned(operand);
        }
        items.push_back(operand);
    }
    const Type* type = compares                            ? boolType()
                       : whenSigned == ir::Op::atomicStore ? voidType()
                                                           : held;
    tree::Expr* result = makeExpr(tree::ExprKind::library, type, range);
    result->library = &kAtomicFunction;
    result->index = static_cast<uint32_t>(held->isSigned() ? whenSigned : whenUnsigned);
    result->items = arena_.copy(items);
    return finish(result);
}

} // namespace msl
