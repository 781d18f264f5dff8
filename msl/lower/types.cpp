#include "msl/lower/lower.h"

namespace msl {

Lowerer::Lowerer(ir::Module& module, Diagnostics& diagnostics)
    : module_(module), builder_(module), diagnostics_(diagnostics) {}

// Arrays, and what holds them, stand in memory: only memory takes a run-time index.
bool Lowerer::isMemoryType(const Type* type) const {
    return type->isArray() || (type->isStruct() && type->structure->hasArray);
}

ir::TypeId Lowerer::irType(const Type* type) {
    switch (type->kind) {
    case TypeKind::voidType:
        return ir::kVoid;
    case TypeKind::boolType:
        return ir::kBool;
    case TypeKind::charType:
    case TypeKind::ucharType:
    case TypeKind::shortType:
    case TypeKind::ushortType:
    case TypeKind::intType:
    case TypeKind::uintType:
        return ir::kInt;
    case TypeKind::longType:
    case TypeKind::ulongType:
        usesInt64_ = true;
        return ir::kLong;
    case TypeKind::halfType:
    case TypeKind::floatType:
        return ir::kFloat;
    case TypeKind::vector:
        return ir::vectorOf(irType(type->element), type->count);
    case TypeKind::matrix:
        return builder_.matrix(type->count, type->element->count);
    case TypeKind::enumeration:
    case TypeKind::atomic:
        return irType(type->element);
    default:
        break;
    }
    const auto known = types_.find(type);
    if (known != types_.end()) {
        return known->second;
    }
    ir::TypeId made = ir::kVoid;
    if (type->isArray()) {
        made = builder_.array(irType(type->element), type->length);
    } else if (type->isStruct()) {
        std::vector<ir::Member> members;
        if (isUnion(type)) {
            members.resize(type->leaves, {ir::kInt, 0, 0});
        } else {
            for (const auto& field : type->structure->fields) {
                members.push_back({irType(field.type), 0, 0});
            }
        }
        if (members.empty()) {
            members.push_back({ir::kInt, 0, 0});
        }
        made = builder_.structure(members, false, false);
    }
    types_.emplace(type, made);
    return made;
}

// The type as it lies in a buffer. Void, and a diagnostic, where that is not supported.
ir::TypeId Lowerer::layoutType(const Type* type, Range range) {
    const Type* scalar = type->scalar();
    if (scalar->isScalar()) {
        if (scalar->isBool() || scalar->size < 4) {
            error(range, "a buffer that holds '" + toText(type) + "' is not supported");
            return ir::kVoid;
        }
        if (type->isVector() && type->packed) {
            return builder_.array(irType(scalar), type->count, scalar->size);
        }
        return irType(type);
    }
    const auto known = layouts_.find(type);
    if (known != layouts_.end()) {
        return known->second;
    }
    ir::TypeId made = ir::kVoid;
    if (type->isArray()) {
        const ir::TypeId element = layoutType(type->element, range);
        if (element != ir::kVoid) {
            made = builder_.array(element, type->length, type->element->size);
        }
    } else if (type->isStruct()) {
        std::vector<ir::Member> members;
        for (const auto& field : type->structure->fields) {
            const ir::TypeId member = layoutType(field.type, range);
            if (member == ir::kVoid) {
                return ir::kVoid;
            }
            const Type* inner = field.type;
            while (inner->isArray()) {
                inner = inner->element;
            }
            members.push_back({member, field.offset, inner->isMatrix() ? inner->element->size : 0});
        }
        if (members.empty()) {
            error(range, "an empty struct cannot lie in a buffer");
            return ir::kVoid;
        }
        made = builder_.structure(members, false, true);
    } else {
        error(range, "a buffer that holds '" + toText(type) + "' is not supported");
    }
    if (made != ir::kVoid) {
        layouts_.emplace(type, made);
    }
    return made;
}

bool Lowerer::spend(Range range) {
    if (stopped_) {
        return false;
    }
    spentOn_ = range;
    if (++steps_ > kMaxLoweringSteps || builder_.instructionCount() > kMaxInstructions) {
        error(range, "the functions expand to more than " + std::to_string(kMaxInstructions) +
                         " instructions");
        stopped_ = true;
    } else if (depth_ > kMaxLoweringDepth) {
        error(range, "the functions are nested too deeply when expanded");
        stopped_ = true;
    }
    return !stopped_;
}

// Counts ways into one place and the values that they bring there.
bool Lowerer::spendWays(size_t ways, size_t values) {
    mergedValues_ += values;
    if (!stopped_ && (ways > kMaxWays || mergedValues_ > kMaxMergedValues)) {
        error(spentOn_, ways > kMaxWays
                            ? "more than " + std::to_string(kMaxWays) + " ways meet in one place"
                            : "the functions change more than " + std::to_string(kMaxMergedValues) +
                                  " values where their ways meet");
        stopped_ = true;
    }
    return !stopped_;
}

} // namespace msl
