#include <algorithm>

#include <spirv/unified1/GLSL.std.450.h>

#include "msl/lower/depth.h"
#include "msl/lower/lower.h"

namespace msl {

using ir::Op;
using tree::ExprKind;

Lowerer::Place Lowerer::valuePlace(const Type* type, Value value) {
    Place result;
    result.root = Place::Root::value;
    result.base = value;
    result.rootType = result.type = type;
    return result;
}

Lowerer::Place Lowerer::newMemory(const Type* type) {
    Place result;
    result.root = Place::Root::memory;
    result.base = builder_.variable(irType(type), ir::Storage::function, function_);
    result.rootType = result.type = type;
    return result;
}

// A value that must be indexed at run time is put into memory first.
Lowerer::Place Lowerer::spilled(const Place& source) {
    Place memory = newMemory(source.type);
    store(memory, load(source));
    return memory;
}

void Lowerer::addStep(Place& target, Step step, const Type* type) {
    for (auto& option : target.options) {
        addStep(option, step, type);
    }
    if (target.root == Place::Root::chosen) {
        target.type = type;
        return;
    }
    if (isUnion(target.type) && !target.hasAddress()) {
        enterUnion(target);
    }
    if (!target.hasAddress()) {
        target.steps.push_back(step);
    } else if (target.type->isStruct()) {
        target.offset += target.type->structure->fields[step.index].offset;
    } else {
        moveWords(target, step, type->size);
    }
    target.type = type;
}

// Moves an address by a number of elements.
void Lowerer::moveWords(Place& target, Step step, uint32_t elementSize) {
    if (!step.dynamic) {
        target.offset += step.index * elementSize;
        return;
    }
    const Value bytes =
        builder_.binary(Op::iMul, ir::kInt, step.index, builder_.intConstant(elementSize));
    target.address = target.address == ir::kNoValue
                         ? bytes
                         : builder_.binary(Op::iAdd, ir::kInt, target.address, bytes);
}

Lowerer::Place Lowerer::place(const tree::Expr* expr) {
    const Depth depth(*this);
    if (!spend(expr->range)) {
        return valuePlace(expr->type, builder_.undefined(irType(expr->type)));
    }
    return placeAtDepth(expr);
}

Lowerer::Place Lowerer::placeAtDepth(const tree::Expr* expr) {
    switch (expr->kind) {
    case ExprKind::variable:
        return variablePlace(expr);
    case ExprKind::field: {
        if (expr->a->type->holdsResources()) {
            if (const Binding* binding = findBinding(expr)) {
                return bindingPlace(expr->type, *binding);
            }
            // A result whose resources are not asked for.
            Binding parts = boundParts(expr->a->type, expr->a);
            return bindingPlace(expr->type, parts.parts[expr->index]);
        }
        Place base = place(expr->a);
        addStep(base, {false, expr->index}, expr->type);
        return base;
    }
    case ExprKind::swizzle: {
        Place base = place(expr->a);
        if (base.swizzleCount > 0) {
            const auto outer = base;
            for (uint8_t i = 0; i < expr->componentCount; ++i) {
                base.swizzle[i] = outer.swizzle[expr->components[i]];
            }
        } else {
            std::copy(std::begin(expr->components), std::end(expr->components), base.swizzle);
        }
        base.swizzleCount = expr->componentCount;
        return base;
    }
    case ExprKind::index: {
        if (expr->a->type->isPointer()) {
            Place base = pointerTarget(expr->a);
            addIndex(base, expr->b, expr->type);
            return base;
        }
        Place base = place(expr->a);
        const Value index = value(expr->b);
        if (base.swizzleCount > 0) {
            return swizzledComponent(std::move(base), index, expr->type);
        }
        if (const auto bits = builder_.scalarBits(index)) {
            const uint32_t length = base.type->isArray() ? base.type->length : base.type->count;
            const auto at = static_cast<uint32_t>(*bits);
            addStep(base, {false, length == 0 ? at : std::min(at, length - 1)}, expr->type);
            return base;
        }
        if (base.root == Place::Root::value && isMemoryType(base.rootType)) {
            base = spilled(base);
        }
        Value bounded = index;
        if (base.type->isArray() && base.type->length > 0 && base.root != Place::Root::buffer &&
            base.root != Place::Root::words) {
            // A wild index must not reach other memory of the device's process.
            bounded = builder_.extended(GLSLstd450UMin, ir::kInt,
                                        {index, builder_.intConstant(base.type->length - 1)});
        }
        addStep(base, {true, bounded}, expr->type);
        return base;
    }
    case ExprKind::deref:
        return pointerTarget(expr->a);
    case ExprKind::assign:
    case ExprKind::compound: {
        Place target;
        assign(expr, &target);
        return target;
    }
    case ExprKind::call: {
        if (!expr->function->returnsReference) {
            return valuePlace(expr->type, value(expr));
        }
        Place target;
        call(expr, &target);
        return target;
    }
    case ExprKind::comma:
        value(expr->a);
        return place(expr->b);
    default:
        return valuePlace(expr->type, value(expr));
    }
}

// v.zyx[i]: the component of v that the index picks.
Lowerer::Place Lowerer::swizzledComponent(Place base, Value index, const Type* type) {
    const uint8_t count = base.swizzleCount;
    base.swizzleCount = 0;
    if (const auto bits = builder_.scalarBits(index)) {
        const uint32_t last = count - 1U;
        addStep(base, {false, base.swizzle[std::min(static_cast<uint32_t>(*bits), last)]}, type);
        return base;
    }
    Value component = builder_.intConstant(base.swizzle[0]);
    for (uint32_t i = 1; i < count; ++i) {
        const Value here = builder_.binary(Op::iEqual, ir::kBool, index, builder_.intConstant(i));
        component =
            builder_.select(ir::kInt, here, builder_.intConstant(base.swizzle[i]), component);
    }
    addStep(base, {true, component}, type);
    return base;
}

// What a pointer points to. A pointer is a place, known when lowering.
Lowerer::Place Lowerer::pointerTarget(const tree::Expr* expr) {
    const Depth depth(*this);
    if (spend(expr->range)) {
        if (expr->kind == ExprKind::addressOf) {
            return place(expr->a);
        }
        if (expr->kind == ExprKind::comma) {
            value(expr->a);
            return pointerTarget(expr->b);
        }
        if (expr->kind == ExprKind::convert) {
            return castTarget(expr);
        }
        if (expr->kind == ExprKind::pointerStep) {
            return pointerStep(expr);
        }
        if (expr->kind == ExprKind::conditional) {
            const Value condition = value(expr->a);
            if (const auto known = builder_.scalarBits(condition)) {
                return pointerTarget(*known != 0 ? expr->b : expr->c);
            }
            std::vector<Place> options{pointerTarget(expr->b), pointerTarget(expr->c)};
            return chosenPlace(std::move(options),
                               builder_.select(ir::kInt, condition, builder_.intConstant(0),
                                               builder_.intConstant(1)));
        }
        const Binding* binding = findBinding(expr);
        if (binding != nullptr && binding->kind == Binding::Kind::place) {
            return movedPlace(*binding, expr->range);
        }
        if (binding != nullptr && binding->kind == Binding::Kind::choice) {
            std::vector<Place> options;
            for (const auto& part : binding->parts) {
                if (part.kind == Binding::Kind::place) {
                    options.push_back(part.place);
                }
            }
            if (options.size() == binding->parts.size()) {
                return chosenPlace(std::move(options), binding->selector);
            }
        }
        if (expr->kind == ExprKind::call) {
            Binding result;
            call(expr, nullptr, &result);
            if (result.kind == Binding::Kind::place) {
                return result.place;
            }
        }
        error(expr->range, "this pointer's target is not known when compiling");
    }
    return valuePlace(expr->type->element, builder_.undefined(irType(expr->type->element)));
}

// What a pointer variable points to now.
Lowerer::Place Lowerer::movedPlace(const Binding& pointer, Range range) {
    Place target = pointer.place;
    if (pointer.moved != UINT32_MAX) {
        addOffset(target, module_.resolve(current_[pointer.moved]), range, target.type);
    }
    return target;
}

// Moves a pointer variable; gives what it points to afterwards, or pointed to before.
Lowerer::Place Lowerer::pointerStep(const tree::Expr* expr) {
    const Value count = value(expr->b);
    Binding* binding = findBinding(expr->a);
    if (binding == nullptr || binding->kind != Binding::Kind::place ||
        binding->moved == UINT32_MAX) {
        error(expr->range, "this pointer's target is not known when compiling");
        return valuePlace(expr->type->element, builder_.undefined(irType(expr->type->element)));
    }
    const Place before = expr->after ? movedPlace(*binding, expr->range) : Place();
    const Op op = expr->op == TokenKind::plus ? Op::iAdd : Op::iSub;
    setVariable(binding->moved,
                builder_.binary(op, ir::kInt, module_.resolve(current_[binding->moved]), count));
    return expr->after ? before : movedPlace(*binding, expr->range);
}

// What a pointer that is cast to another element type points to.
Lowerer::Place Lowerer::castTarget(const tree::Expr* expr) {
    Place target = pointerTarget(expr->a);
    const Type* type = expr->type->element;
    if (target.hasAddress()) {
        target.type = target.rootType = type;
    } else if (target.type->isVector() && type == target.type->element) {
        addStep(target, {false, 0}, type);
    }
    if (target.type != type) {
        error(expr->range, "this pointer's target cannot be seen as '" + toText(type) + "'");
    }
    return target;
}

// Moves a pointer's target by an index within the array that it lies in.
void Lowerer::addIndex(Place& target, const tree::Expr* index, const Type* type) {
    addOffset(target, value(index), index->range, type);
}

void Lowerer::addOffset(Place& target, Value offset, Range range, const Type* type) {
    for (auto& option : target.options) {
        addOffset(option, offset, range, type);
    }
    if (target.root == Place::Root::chosen) {
        target.type = type;
        return;
    }
    if (builder_.isSplatOf(offset, 0)) {
        return;
    }
    if (target.hasAddress()) {
        const auto known = builder_.scalarBits(offset);
        moveWords(target, known ? Step{false, static_cast<uint32_t>(*known)} : Step{true, offset},
                  type->size);
        target.type = type;
        return;
    }
    if (target.steps.empty() || target.swizzleCount > 0) {
        error(range, "this pointer does not point into an array");
        return;
    }
    auto& last = target.steps.back();
    const Value before = last.dynamic ? last.index : builder_.intConstant(last.index);
    const Value sum = builder_.binary(Op::iAdd, ir::kInt, before, offset);
    if (const auto bits = builder_.scalarBits(sum)) {
        last = {false, static_cast<uint32_t>(*bits)};
    } else {
        last = {true, sum};
    }
    target.type = type;
}

Lowerer::Place Lowerer::variablePlace(const tree::Expr* expr) {
    const auto& variable = *expr->variable;
    if (variable.kind == tree::VariableKind::global) {
        return globalPlace(variable);
    }
    const auto& binding = frame_->slots[variable.slot];
    if (binding.kind == Binding::Kind::place) {
        return binding.place;
    }
    Place result;
    result.rootType = result.type = variable.type;
    if (binding.kind == Binding::Kind::ssa) {
        result.root = Place::Root::ssa;
        result.base = binding.ssa;
        return result;
    }
    // Its declaration has not been passed: a jump went around it.
    return valuePlace(variable.type, builder_.undefined(irType(variable.type)));
}

// A program-scope constant: its value where it is known, a private variable for arrays.
Lowerer::Place Lowerer::globalPlace(const tree::Variable& variable) {
    auto& binding = globals_[variable.slot];
    if (binding.kind == Binding::Kind::place) {
        if (binding.place.root == Place::Root::memory) {
            useGlobal(binding.place.base);
        }
        return binding.place;
    }
    const Value init = value(variable.init);
    if (!builder_.isConstant(init)) {
        if (isMemoryType(variable.type)) {
            Place local = newMemory(variable.type);
            store(local, init);
            return local;
        }
        return valuePlace(variable.type, init);
    }
    binding.kind = Binding::Kind::place;
    if (!isMemoryType(variable.type)) {
        binding.place = valuePlace(variable.type, init);
        return binding.place;
    }
    Place result;
    result.root = Place::Root::memory;
    result.base = builder_.variable(irType(variable.type), ir::Storage::privateData, nullptr);
    result.rootType = result.type = variable.type;
    result.constantSpace = true;
    module_.globals.push_back(
        {.variable = result.base, .storage = ir::Storage::privateData, .initializer = init});
    useGlobal(result.base);
    globals_[variable.slot].place = result;
    return result;
}

// --- reading

Lowerer::Value Lowerer::pickSwizzle(const Place& source, Value vector) {
    if (source.swizzleCount == 0) {
        return vector;
    }
    uint32_t components[4];
    std::copy(std::begin(source.swizzle), std::end(source.swizzle), components);
    return builder_.shuffle(vector, std::span<const uint32_t>(components, source.swizzleCount));
}

Lowerer::Value Lowerer::load(const Place& source) { return pickSwizzle(source, loadWhole(source)); }

Lowerer::Value Lowerer::extractPart(Value whole, const Step& step) {
    if (!step.dynamic) {
        return builder_.extract(whole, step.index);
    }
    const auto& shape = module_.typeOf(whole);
    if (shape.kind == ir::TypeKind::vector) {
        return builder_.extractDynamic(whole, step.index);
    }
    // A matrix: the column is chosen among all.
    const uint32_t columns = shape.count;
    Value column = builder_.extract(whole, 0);
    for (uint32_t i = 1; i < columns; ++i) {
        const Value here =
            builder_.binary(Op::iEqual, ir::kBool, step.index, builder_.intConstant(i));
        column = builder_.select(builder_.typeOf(column), here, builder_.extract(whole, i), column);
    }
    return column;
}

Lowerer::Value Lowerer::loadWhole(const Place& source) {
    switch (source.root) {
    case Place::Root::ssa:
    case Place::Root::value: {
        Value result = source.base;
        if (source.root == Place::Root::ssa) {
            result = current_[source.base];
            if (result == ir::kNoValue) {
                result = builder_.undefined(irType(source.rootType));
            }
        }
        for (const auto& step : source.steps) {
            result = extractPart(result, step);
        }
        return result;
    }
    case Place::Root::memory: {
        // Constant tables give their elements away at once where the index is known.
        if (source.constantSpace && std::none_of(source.steps.begin(), source.steps.end(),
                                                 [](const Step& step) { return step.dynamic; })) {
            for (const auto& global : module_.globals) {
                if (global.variable == source.base) {
                    Value result = global.initializer;
                    for (const auto& step : source.steps) {
                        result = builder_.extract(result, step.index);
                    }
                    return result;
                }
            }
        }
        return loadFrom(source, source.type);
    }
    case Place::Root::buffer:
        return loadParts(source, source.type, {});
    case Place::Root::words:
    case Place::Root::shared:
        return loadWords(source, source.type);
    case Place::Root::chosen:
        return onEachOption(source.base, source.options.size(), true,
                            [&](size_t i) { return loadWhole(source.options[i]); });
    case Place::Root::none:
        break;
    }
    return builder_.undefined(irType(source.type));
}

Lowerer::Value Lowerer::pointerOf(const Place& target, const Type* type) {
    if (target.steps.empty()) {
        return target.base;
    }
    std::vector<uint32_t> operands{target.base};
    for (const auto& step : target.steps) {
        operands.push_back(step.dynamic ? step.index : builder_.intConstant(step.index));
    }
    const auto storage = module_.typeOf(target.base).storage;
    const ir::TypeId pointee =
        target.root == Place::Root::buffer ? layoutType(type, {}) : irType(type);
    return builder_.emit(Op::accessChain, builder_.pointer(pointee, storage), operands);
}

Lowerer::Value Lowerer::loadFrom(const Place& source, const Type* type) {
    const bool fixed = std::none_of(source.steps.begin(), source.steps.end(),
                                    [](const Step& step) { return step.dynamic; });
    if (source.root != Place::Root::buffer || !source.constantSpace || !fixed) {
        return builder_.emit(Op::load, irType(type), {pointerOf(source, type)});
    }
    // What never changes is read once, at the start of the function.
    std::vector<uint32_t> path;
    for (const auto& step : source.steps) {
        path.push_back(step.index);
    }
    for (const auto& known : hoisted_) {
        if (known.base == source.base && known.path == path) {
            return known.loaded;
        }
    }
    const ir::BlockId here = builder_.current();
    builder_.setCurrent(prologue_);
    const Value loaded = builder_.emit(Op::load, irType(type), {pointerOf(source, type)});
    builder_.setCurrent(here);
    hoisted_.push_back({source.base, std::move(path), loaded});
    return loaded;
}

// Structs and arrays in buffers are typed by their layout, so they are read part by part.
Lowerer::Value Lowerer::loadParts(const Place& source, const Type* type, Range range) {
    if (!spend(range)) {
        return builder_.undefined(irType(type));
    }
    const bool packed = type->isVector() && type->packed;
    if (!packed && !type->isArray() && !type->isStruct()) {
        return loadFrom(source, type);
    }
    const uint32_t count = packed ? type->count
                           : type->isArray()
                               ? type->length
                               : static_cast<uint32_t>(type->structure->fields.size());
    std::vector<Value> parts;
    for (uint32_t i = 0; i < count; ++i) {
        const Type* part = type->isStruct() ? type->structure->fields[i].type : type->element;
        Place at = source;
        addStep(at, {false, i}, part);
        parts.push_back(loadParts(at, part, range));
    }
    return builder_.construct(irType(type), parts);
}

// --- writing

void Lowerer::store(const Place& target, Value stored) {
    switch (target.root) {
    case Place::Root::ssa: {
        Value whole = current_[target.base];
        if (whole == ir::kNoValue) {
            whole = builder_.undefined(irType(target.rootType));
        }
        setVariable(target.base, replacePart(whole, target, 0, stored));
        return;
    }
    case Place::Root::memory:
    case Place::Root::words:
    case Place::Root::shared:
    case Place::Root::buffer: {
        if (target.swizzleCount == 1) {
            Place component = target;
            component.swizzleCount = 0;
            addStep(component, {false, target.swizzle[0]}, target.type->scalar());
            store(component, stored);
            return;
        }
        if (target.swizzleCount > 1) {
            Place whole = target;
            whole.swizzleCount = 0;
            Value vector = loadWhole(whole);
            for (uint8_t i = 0; i < target.swizzleCount; ++i) {
                vector = builder_.insert(vector, builder_.extract(stored, i), target.swizzle[i]);
            }
            store(whole, vector);
            return;
        }
        if (target.hasAddress()) {
            storeWords(target, target.type, stored);
        } else if (target.root == Place::Root::buffer) {
            storeParts(target, target.type, stored);
        } else {
            builder_.emit(Op::store, ir::kVoid, {pointerOf(target, target.type), stored});
        }
        return;
    }
    case Place::Root::chosen:
        onEachOption(target.base, target.options.size(), false, [&](size_t i) {
            Place option = target.options[i];
            option.swizzleCount = target.swizzleCount;
            std::copy(std::begin(target.swizzle), std::end(target.swizzle), option.swizzle);
            store(option, stored);
            return ir::kNoValue;
        });
        return;
    default:
        return;
    }
}

void Lowerer::storeParts(const Place& target, const Type* type, Value stored) {
    const bool packed = type->isVector() && type->packed;
    if (!packed && !type->isArray() && !type->isStruct()) {
        builder_.emit(Op::store, ir::kVoid, {pointerOf(target, type), stored});
        return;
    }
    const uint32_t count = packed ? type->count
                           : type->isArray()
                               ? type->length
                               : static_cast<uint32_t>(type->structure->fields.size());
    for (uint32_t i = 0; i < count && spend({}); ++i) {
        const Type* part = type->isStruct() ? type->structure->fields[i].type : type->element;
        Place at = target;
        addStep(at, {false, i}, part);
        storeParts(at, part, builder_.extract(stored, i));
    }
}

// The whole with the part that the remaining steps lead to replaced.
Lowerer::Value Lowerer::replacePart(Value whole, const Place& target, size_t step, Value part) {
    if (step == target.steps.size()) {
        if (target.swizzleCount == 0) {
            return part;
        }
        if (target.swizzleCount == 1) {
            return builder_.insert(whole, part, target.swizzle[0]);
        }
        for (uint8_t i = 0; i < target.swizzleCount; ++i) {
            whole = builder_.insert(whole, builder_.extract(part, i), target.swizzle[i]);
        }
        return whole;
    }
    const Step& at = target.steps[step];
    if (!at.dynamic) {
        const bool last = step + 1 == target.steps.size() && target.swizzleCount == 0;
        const Value inner =
            last ? part : replacePart(builder_.extract(whole, at.index), target, step + 1, part);
        return builder_.insert(whole, inner, at.index);
    }
    const ir::TypeInfo shape = module_.typeOf(whole);
    if (shape.kind == ir::TypeKind::vector) {
        return builder_.insertDynamic(whole, part, at.index);
    }
    const Value column = replacePart(extractPart(whole, at), target, step + 1, part);
    for (uint32_t i = 0; i < shape.count; ++i) {
        const Value here =
            builder_.binary(Op::iEqual, ir::kBool, at.index, builder_.intConstant(i));
        const Value old = builder_.extract(whole, i);
        whole = builder_.insert(whole, builder_.select(builder_.typeOf(old), here, column, old), i);
    }
    return whole;
}

} // namespace msl
