#include <algorithm>

#include "msl/lower/depth.h"
#include "msl/lower/lower.h"

namespace msl {

using ir::BlockId;
using tree::StmtKind;

// --- single-assignment variables

uint32_t Lowerer::newVariable(Value value) {
    current_.push_back(value);
    stamps_.push_back(0);
    return static_cast<uint32_t>(current_.size() - 1);
}

void Lowerer::setVariable(uint32_t variable, Value value) {
    log_.push_back({variable, current_[variable]});
    current_[variable] = value;
}

void Lowerer::rollBack(size_t mark) {
    while (log_.size() > mark) {
        current_[log_.back().variable] = log_.back().before;
        log_.pop_back();
    }
}

// The way from here into a merge block of the construct that began at the mark.
Lowerer::Edge Lowerer::edge(size_t mark) {
    Edge result;
    result.from = builder_.current();
    result.returned = frame_->returned;
    if (!spendWays(1, (log_.size() - mark) / 32)) {
        return result;
    }
    ++stamp_;
    for (size_t i = mark; i < log_.size(); ++i) {
        const uint32_t variable = log_[i].variable;
        if (stamps_[variable] != stamp_) {
            stamps_[variable] = stamp_;
            result.changes.push_back({variable, current_[variable]});
        }
    }
    return result;
}

// Continues in the block with what its edges bring: one value where they agree, else a phi. The
// variables must stand as they did where the construct began.
void Lowerer::merge(BlockId block, std::vector<Edge>& edges) {
    builder_.start(*function_, block);
    if (edges.empty()) {
        builder_.terminate(ir::Terminator::unreachable);
        return;
    }
    bool allReturned = true;
    for (const auto& way : edges) {
        allReturned = allReturned && way.returned;
    }
    frame_->returned = allReturned;
    // What each edge brings for each variable that any of them changes, one row per edge.
    auto& variables = mergeVariables_;
    variables.clear();
    ++stamp_;
    slots_.resize(current_.size());
    for (const auto& way : edges) {
        for (const auto& change : way.changes) {
            if (stamps_[change.variable] != stamp_) {
                stamps_[change.variable] = stamp_;
                slots_[change.variable] = static_cast<uint32_t>(variables.size());
                variables.push_back(change.variable);
            }
        }
    }
    if (!spendWays(edges.size(), edges.size() * variables.size())) {
        return;
    }
    auto& values = mergeValues_;
    values.clear();
    for (const auto& way : edges) {
        const size_t row = values.size();
        for (const uint32_t variable : variables) {
            values.push_back(current_[variable]);
        }
        for (const auto& change : way.changes) {
            values[row + slots_[change.variable]] = change.value;
        }
    }
    auto& pairs = mergePairs_;
    for (size_t slot = 0; slot < variables.size(); ++slot) {
        pairs.clear();
        bool same = true;
        bool missing = false;
        ir::TypeId type = ir::kVoid;
        for (size_t i = 0; i < edges.size(); ++i) {
            const Value value = module_.resolve(values[i * variables.size() + slot]);
            missing = missing || value == ir::kNoValue;
            same = same && (i == 0 || value == pairs[0]);
            pairs.push_back(value);
            pairs.push_back(edges[i].from);
            type = value != ir::kNoValue ? builder_.typeOf(value) : type;
        }
        if (missing) {
            // Declared on one way only: nothing can name it here.
            setVariable(variables[slot], ir::kNoValue);
        } else if (same) {
            setVariable(variables[slot], pairs[0]);
        } else {
            const Value phi = builder_.phi(block, type, static_cast<uint32_t>(pairs.size()));
            setVariable(variables[slot], builder_.finishPhi(phi, pairs));
        }
    }
}

// --- statements

void Lowerer::statement(const tree::Stmt* stmt) {
    const Depth depth(*this);
    if (spend(stmt->range)) {
        statementAtDepth(stmt);
    }
}

void Lowerer::statementAtDepth(const tree::Stmt* stmt) {
    switch (stmt->kind) {
    case StmtKind::expression:
        value(stmt->expr);
        break;
    case StmtKind::declare:
        declareVariable(stmt);
        break;
    case StmtKind::compound:
        statements(stmt->items);
        break;
    case StmtKind::ifElse:
        ifElse(stmt, {});
        break;
    case StmtKind::loop:
        loop(stmt);
        break;
    case StmtKind::multiway:
        multiway(stmt);
        break;
    case StmtKind::leave:
        leave(stmt);
        break;
    case StmtKind::breakOut:
        breakTo(frame_->breakables.back(), frame_->breakables.back().breaks,
                frame_->breakables.back().breakTarget);
        break;
    case StmtKind::continueLoop: {
        auto loop = std::find_if(frame_->breakables.rbegin(), frame_->breakables.rend(),
                                 [](const Breakable& item) { return item.isLoop; });
        breakTo(*loop, loop->continues, loop->continueTarget);
        break;
    }
    }
}

void Lowerer::breakTo(Breakable& target, std::vector<Edge>& edges, BlockId block) {
    edges.push_back(edge(target.mark));
    builder_.branch(block);
}

void Lowerer::statements(std::span<tree::Stmt* const> list) {
    for (size_t i = 0; i < list.size() && live() && !stopped_; ++i) {
        const auto* stmt = list[i];
        const auto rest = list.subspan(i + 1);
        if (stmt->kind == StmtKind::ifElse && stmt->mayReturn && !rest.empty() &&
            stmt->otherwise == nullptr && stmt->body->alwaysReturns) {
            // "if (c) return x; rest": the rest is the other branch.
            const Depth depth(*this);
            if (spend(stmt->range)) {
                ifElse(stmt, rest);
            }
            return;
        }
        statement(stmt);
        if (stmt->mayReturn && live() && afterReturn(rest)) {
            return;
        }
    }
}

// After a statement that may have returned: what follows happens only where it has not. True where
// that has been seen to.
bool Lowerer::afterReturn(std::span<tree::Stmt* const> rest) {
    const Value flag = module_.resolve(current_[frame_->flag]);
    if (builder_.isSplatOf(flag, 0)) {
        return false;
    }
    if (builder_.isSplatOf(flag, 1)) {
        if (frame_->breakables.empty()) {
            frame_->returned = true;
        } else {
            auto& inner = frame_->breakables.back();
            breakTo(inner, inner.breaks, inner.breakTarget);
        }
        return true;
    }
    const BlockId after = builder_.makeBlock();
    const BlockId other = builder_.makeBlock();
    const size_t mark = log_.size();
    builder_.selectionMerge(after);
    if (!frame_->breakables.empty()) {
        auto& inner = frame_->breakables.back();
        builder_.conditional(flag, other, after);
        builder_.start(*function_, other);
        breakTo(inner, inner.breaks, inner.breakTarget);
        rollBack(mark);
        builder_.start(*function_, after);
        setVariable(frame_->flag, builder_.boolConstant(false));
        return false;
    }
    std::vector<Edge> edges;
    frame_->returned = true;
    edges.push_back(edge(mark));
    frame_->returned = false;
    builder_.conditional(flag, after, other);
    builder_.start(*function_, other);
    setVariable(frame_->flag, builder_.boolConstant(false));
    statements(rest);
    if (builder_.open()) {
        edges.push_back(edge(mark));
        builder_.branch(after);
    }
    rollBack(mark);
    merge(after, edges);
    return true;
}

void Lowerer::declareVariable(const tree::Stmt* stmt) {
    const auto& variable = *stmt->variable;
    Binding binding;
    if (variable.isReference && variable.type->holdsResources()) {
        binding.target = findBinding(stmt->expr);
        binding.kind = binding.target != nullptr ? Binding::Kind::alias : Binding::Kind::none;
        if (binding.target == nullptr) {
            binding = bound(variable.type, stmt->expr);
        }
    } else if (variable.isReference) {
        binding.kind = Binding::Kind::place;
        binding.place = place(stmt->expr);
    } else {
        binding = bound(variable.type, stmt->expr);
    }
    if (variable.isMoved) {
        startMoving(binding);
    }
    frame_->slots[variable.slot] = std::move(binding);
}

// From here on the pointer may be moved.
void Lowerer::startMoving(Binding& pointer) {
    pointer.moved = newVariable(ir::kNoValue);
    setVariable(pointer.moved, builder_.intConstant(0));
}

// `rest` runs where the condition does not hold and there is no other branch.
void Lowerer::ifElse(const tree::Stmt* stmt, std::span<tree::Stmt* const> rest) {
    const Value condition = value(stmt->expr);
    if (!builder_.open()) {
        return;
    }
    if (const auto known = builder_.scalarBits(condition)) {
        if (*known != 0) {
            statement(stmt->body);
        } else if (stmt->otherwise != nullptr) {
            statement(stmt->otherwise);
        } else {
            statements(rest);
        }
        return;
    }
    const BlockId body = builder_.makeBlock();
    const BlockId after = builder_.makeBlock();
    const bool hasOther = stmt->otherwise != nullptr || !rest.empty();
    const BlockId other = hasOther ? builder_.makeBlock() : after;
    const size_t mark = log_.size();
    std::vector<Edge> edges;
    if (!hasOther) {
        edges.push_back(edge(mark));
    }
    builder_.selectionMerge(after);
    builder_.conditional(condition, body, other);
    builder_.start(*function_, body);
    statement(stmt->body);
    if (builder_.open()) {
        edges.push_back(edge(mark));
        builder_.branch(after);
    }
    rollBack(mark);
    frame_->returned = false;
    if (hasOther) {
        builder_.start(*function_, other);
        if (stmt->otherwise != nullptr) {
            statement(stmt->otherwise);
        } else {
            statements(rest);
        }
        if (builder_.open()) {
            edges.push_back(edge(mark));
            builder_.branch(after);
        }
        rollBack(mark);
        frame_->returned = false;
    }
    merge(after, edges);
}

// The ssa variables that a loop may change.
std::vector<uint32_t> Lowerer::loopVariables(const tree::Stmt* stmt) {
    std::vector<uint32_t> result;
    ++stamp_;
    const auto add = [&](uint32_t variable) {
        if (stamps_[variable] != stamp_ && current_[variable] != ir::kNoValue) {
            stamps_[variable] = stamp_;
            result.push_back(variable);
        }
    };
    const auto addPlace = [&](const auto& self, const Place& place) -> void {
        if (place.root == Place::Root::ssa) {
            add(place.base);
        }
        if (place.whole != nullptr) {
            self(self, *place.whole);
        }
        for (const auto& option : place.options) {
            self(self, option);
        }
    };
    const auto addBinding = [&](const auto& self, const Binding& binding) -> void {
        switch (binding.kind) {
        case Binding::Kind::ssa:
            add(binding.ssa);
            break;
        case Binding::Kind::place:
            addPlace(addPlace, binding.place);
            if (binding.moved != UINT32_MAX) {
                add(binding.moved);
            }
            break;
        case Binding::Kind::alias:
            self(self, *binding.target);
            break;
        case Binding::Kind::parts:
            for (const auto& part : binding.parts) {
                self(self, part);
            }
            break;
        default:
            break;
        }
    };
    for (const auto* variable : stmt->assigned) {
        if (variable->kind == tree::VariableKind::global) {
            continue;
        }
        addBinding(addBinding, frame_->slots[variable->slot]);
    }
    if (stmt->mayReturn) {
        add(frame_->flag);
        if (current_[frame_->result] != ir::kNoValue) {
            add(frame_->result);
        }
        add(frame_->resultChoice);
    }
    return result;
}

void Lowerer::loop(const tree::Stmt* stmt) {
    if (stmt->init != nullptr) {
        statement(stmt->init);
    }
    if (!live()) {
        return;
    }
    const BlockId header = builder_.makeBlock();
    const BlockId body = builder_.makeBlock();
    const BlockId continuing = builder_.makeBlock();
    const BlockId after = builder_.makeBlock();
    const auto variables = loopVariables(stmt);
    const BlockId before = builder_.current();
    builder_.branch(header);
    builder_.start(*function_, header);
    std::vector<Value> phis;
    std::vector<Value> initial;
    for (const uint32_t variable : variables) {
        const Value init = module_.resolve(current_[variable]);
        const Value phi = builder_.phi(header, builder_.typeOf(init), 4);
        initial.push_back(init);
        phis.push_back(phi);
        setVariable(variable, phi);
    }
    builder_.loopMerge(after, continuing);
    const BlockId test = builder_.makeBlock();
    builder_.branch(test);
    builder_.start(*function_, test);
    frame_->breakables.push_back({true, log_.size(), after, continuing, {}, {}});
    const size_t mark = log_.size();
    if (stmt->expr != nullptr && !stmt->testLast) {
        const Value condition = value(stmt->expr);
        if (const auto known = builder_.scalarBits(condition); known && *known != 0) {
            builder_.branch(body);
        } else if (builder_.open()) {
            frame_->breakables.back().breaks.push_back(edge(mark));
            builder_.conditional(condition, body, after);
        }
    } else {
        builder_.branch(body);
    }
    builder_.start(*function_, body);
    statements(std::span(&stmt->body, 1));
    if (builder_.open()) {
        auto& here = frame_->breakables.back();
        breakTo(here, here.continues, continuing);
    }
    rollBack(mark);
    frame_->returned = false;
    // The continue part: the step, and the test of a do loop.
    auto continues = std::move(frame_->breakables.back().continues);
    const bool reached = !continues.empty();
    Value repeat = ir::kNoValue; // a do loop's test, where it is not always true
    if (reached) {
        merge(continuing, continues);
        frame_->returned = false;
        if (stmt->step != nullptr) {
            value(stmt->step);
        }
        if (stmt->testLast) {
            const Value condition = value(stmt->expr);
            if (!builder_.isSplatOf(condition, 1)) {
                repeat = condition;
                frame_->breakables.back().breaks.push_back(edge(mark));
            }
        }
    } else {
        builder_.start(*function_, continuing);
    }
    const BlockId last = builder_.current();
    for (size_t i = 0; i < variables.size(); ++i) {
        const Value back = reached ? module_.resolve(current_[variables[i]]) : initial[i];
        const uint32_t pairs[] = {initial[i], before, back == ir::kNoValue ? initial[i] : back,
                                  last};
        builder_.finishPhi(phis[i], pairs);
    }
    if (repeat != ir::kNoValue) {
        builder_.conditional(repeat, header, after);
    } else {
        builder_.branch(header);
    }
    rollBack(mark);
    auto breaks = std::move(frame_->breakables.back().breaks);
    frame_->breakables.pop_back();
    merge(after, breaks);
    frame_->returned = false;
}

void Lowerer::multiway(const tree::Stmt* stmt) {
    const Value selector = value(stmt->expr);
    if (!builder_.open()) {
        return;
    }
    const BlockId after = builder_.makeBlock();
    const size_t mark = log_.size();
    // Labels that stand at one place share a block.
    std::vector<std::pair<uint32_t, BlockId>> sections;
    std::vector<ir::Case> cases;
    BlockId otherwise = after;
    for (const auto& label : stmt->cases) {
        if (sections.empty() || sections.back().first != label.position) {
            sections.emplace_back(label.position, builder_.makeBlock());
        }
        if (label.isDefault) {
            otherwise = sections.back().second;
        } else {
            cases.push_back({static_cast<uint32_t>(label.value), sections.back().second});
        }
    }
    if (!spendWays(stmt->cases.size(), 0)) {
        return;
    }
    frame_->breakables.push_back({false, mark, after, ir::kNoBlock, {}, {}});
    const Edge entering = edge(mark);
    if (otherwise == after) {
        frame_->breakables.back().breaks.push_back(entering);
    }
    builder_.selectionMerge(after);
    builder_.multiway(selector, otherwise, cases);
    std::vector<Edge> falling;
    for (size_t i = 0; i < sections.size() && !stopped_; ++i) {
        std::vector<Edge> edges{entering};
        for (auto& way : falling) {
            edges.push_back(std::move(way));
        }
        falling.clear();
        rollBack(mark);
        merge(sections[i].second, edges);
        frame_->returned = false;
        const size_t begin = sections[i].first;
        const size_t end = i + 1 < sections.size() ? sections[i + 1].first : stmt->items.size();
        statements(stmt->items.subspan(begin, end - begin));
        if (!builder_.open()) {
            continue;
        }
        if (i + 1 < sections.size()) {
            falling.push_back(edge(mark));
            builder_.branch(sections[i + 1].second);
        } else {
            auto& here = frame_->breakables.back();
            breakTo(here, here.breaks, after);
        }
    }
    rollBack(mark);
    frame_->returned = false;
    auto breaks = std::move(frame_->breakables.back().breaks);
    frame_->breakables.pop_back();
    merge(after, breaks);
    frame_->returned = false;
}

// Another of the places that a function may refer to with its result.
void Lowerer::addResultPlace(Place place, Range range) {
    auto& result = frame_->resultPlace;
    const auto fixed = [](const Place& at) {
        return at.address == ir::kNoValue && at.root != Place::Root::chosen &&
               std::none_of(at.steps.begin(), at.steps.end(),
                            [](const Step& step) { return step.dynamic; });
    };
    if (result.root == Place::Root::none) {
        result = std::move(place);
        return;
    }
    if (!fixed(place) || (result.root != Place::Root::chosen && !fixed(result))) {
        error(range, "which place a function with several 'return's refers to must not depend on "
                     "an index that is known at run time only");
        return;
    }
    if (result.root != Place::Root::chosen) {
        result = chosenPlace({result}, ir::kNoValue);
    }
    setVariable(frame_->resultChoice,
                builder_.intConstant(static_cast<uint32_t>(result.options.size())));
    result.options.push_back(std::move(place));
}

void Lowerer::leave(const tree::Stmt* stmt) {
    if (stmt->expr != nullptr && frame_->function->returnsReference) {
        addResultPlace(place(stmt->expr), stmt->range);
    } else if (stmt->expr != nullptr && stmt->expr->type->holdsResources()) {
        Binding result = bound(stmt->expr->type, stmt->expr);
        if (frame_->resultParts.kind == Binding::Kind::none) {
            frame_->resultParts = std::move(result);
        } else {
            assignParts(stmt->expr->type, frame_->resultParts, result, stmt->range);
        }
    } else if (stmt->expr != nullptr) {
        const Value result = value(stmt->expr);
        setVariable(frame_->result, result);
    }
    setVariable(frame_->flag, builder_.boolConstant(true));
    if (!builder_.open()) {
        return;
    }
    if (frame_->breakables.empty()) {
        frame_->returned = true;
        return;
    }
    auto& inner = frame_->breakables.back();
    breakTo(inner, inner.breaks, inner.breakTarget);
}

} // namespace msl
