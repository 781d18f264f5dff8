#include <algorithm>

#include "msl/sema/depth.h"
#include "msl/sema/sema.h"

namespace msl {

using tree::StmtKind;

tree::Stmt* Sema::makeStmt(StmtKind kind, Range range) {
    auto* stmt = arena_.make<tree::Stmt>();
    stmt->kind = kind;
    stmt->range = range;
    return stmt;
}

tree::Stmt* Sema::block(const std::vector<tree::Stmt*>& items, Range range) {
    tree::Stmt* result = makeStmt(StmtKind::compound, range);
    result->items = arena_.copy(items);
    for (const auto* item : items) {
        result->mayReturn = result->mayReturn || item->mayReturn;
        result->alwaysReturns = result->alwaysReturns || item->alwaysReturns;
    }
    return result;
}

tree::Stmt* Sema::statement(const ast::Stmt* stmt) {
    const DepthGuard guard(depth_);
    return tooDeep(stmt->range) || diagnostics_.exhausted() ? nullptr : statementAtDepth(stmt);
}

// Every loop around a write must carry the written variable from round to round.
void Sema::noteAssigned(const tree::Expr* lvalue) {
    while (lvalue != nullptr && lvalue->kind != tree::ExprKind::variable) {
        lvalue = lvalue->a;
    }
    if (lvalue == nullptr || state_ == nullptr) {
        return;
    }
    for (auto& loop : state_->loops) {
        if (!loop.isSwitch && std::find(loop.assigned.begin(), loop.assigned.end(),
                                        lvalue->variable) == loop.assigned.end()) {
            loop.assigned.push_back(lvalue->variable);
        }
    }
}

tree::Expr* Sema::condition(const ast::Expr* expr) {
    tree::Expr* test = value(expr);
    if (test == nullptr) {
        return nullptr;
    }
    if (expr->kind == ast::ExprKind::assign && expr->op == TokenKind::equal && !expr->grouped) {
        diagnostics_.warning(expr->range, "this condition assigns; '==' compares, and a second "
                                          "pair of parentheses says that it is meant so");
    }
    if (!test->type->isScalar() && !(test->type->isEnum() && !test->type->enumeration->scoped)) {
        error(expr->range, "a condition is a single number or bool, not '" + toText(test->type) +
                               "'" + (test->type->isVector() ? "; use 'all' or 'any'" : ""));
        return nullptr;
    }
    return convertTo(test, boolType());
}

tree::Stmt* Sema::compound(const ast::Stmt* stmt) {
    const size_t mark = scope_.size();
    const size_t outerStart = scopeStart_;
    scopeStart_ = mark;
    std::vector<tree::Stmt*> items;
    bool good = true;
    for (const auto* item : stmt->items) {
        tree::Stmt* made = statement(item);
        good = good && made != nullptr;
        if (made != nullptr) {
            items.push_back(made);
        }
    }
    closeScope(mark);
    scopeStart_ = outerStart;
    return good ? block(items, stmt->range) : nullptr;
}

tree::Stmt* Sema::statementAtDepth(const ast::Stmt* stmt) {
    using enum ast::StmtKind;
    switch (stmt->kind) {
    case empty:
        return block({}, stmt->range);
    case ast::StmtKind::expression: {
        tree::Expr* expr = Sema::expression(stmt->expr);
        if (expr == nullptr) {
            return nullptr;
        }
        warnUnusedValue(*expr);
        tree::Stmt* result = makeStmt(StmtKind::expression, stmt->range);
        result->expr = expr;
        return result;
    }
    case ast::StmtKind::declaration:
        return localDeclaration(stmt->decl, stmt->range);
    case ast::StmtKind::compound:
        return Sema::compound(stmt);
    case ifElse: {
        const size_t mark = scope_.size();
        const size_t outerStart = scopeStart_;
        scopeStart_ = mark;
        tree::Stmt* declared =
            stmt->decl != nullptr ? localDeclaration(stmt->decl, stmt->range) : nullptr;
        tree::Expr* test = condition(stmt->expr);
        tree::Stmt* body = statement(stmt->body);
        tree::Stmt* otherwise = stmt->otherwise != nullptr ? statement(stmt->otherwise) : nullptr;
        closeScope(mark);
        scopeStart_ = outerStart;
        if (test == nullptr || body == nullptr ||
            (stmt->otherwise != nullptr && otherwise == nullptr) ||
            (stmt->decl != nullptr && declared == nullptr)) {
            return nullptr;
        }
        tree::Stmt* result = makeStmt(StmtKind::ifElse, stmt->range);
        result->expr = test;
        result->body = body;
        result->otherwise = otherwise;
        result->mayReturn = body->mayReturn || (otherwise != nullptr && otherwise->mayReturn);
        result->alwaysReturns =
            body->alwaysReturns && otherwise != nullptr && otherwise->alwaysReturns;
        return declared != nullptr ? block({declared, result}, stmt->range) : result;
    }
    case forLoop:
    case whileLoop:
    case doLoop:
        return loop(stmt);
    case rangeFor:
        return rangeLoop(stmt);
    case switchCase:
        return multiway(stmt);
    case caseLabel:
    case defaultLabel:
        error(stmt->range, "a case label stands only directly in the block of a 'switch'");
        return nullptr;
    case breakLoop:
        if (state_->loops.empty()) {
            error(stmt->range, "there is no loop or 'switch' to break out of");
            return nullptr;
        }
        return makeStmt(StmtKind::breakOut, stmt->range);
    case continueLoop:
        if (std::none_of(state_->loops.begin(), state_->loops.end(),
                         [](const Loop& item) { return !item.isSwitch; })) {
            error(stmt->range, "there is no loop to continue");
            return nullptr;
        }
        return makeStmt(StmtKind::continueLoop, stmt->range);
    case returnValue:
        return returnStatement(stmt);
    }
    return nullptr;
}

tree::Stmt* Sema::loop(const ast::Stmt* stmt) {
    const size_t mark = scope_.size();
    const size_t outerStart = scopeStart_;
    scopeStart_ = mark;
    tree::Stmt* init = stmt->init != nullptr ? statement(stmt->init) : nullptr;
    state_->loops.push_back({{}, scope_.size(), false});
    tree::Expr* test = stmt->expr != nullptr ? condition(stmt->expr) : nullptr;
    tree::Expr* step = stmt->step != nullptr ? expression(stmt->step) : nullptr;
    tree::Stmt* body = statement(stmt->body);
    const auto assigned = std::move(state_->loops.back().assigned);
    state_->loops.pop_back();
    closeScope(mark);
    scopeStart_ = outerStart;
    if (body == nullptr || (stmt->init != nullptr && init == nullptr) ||
        (stmt->expr != nullptr && test == nullptr) || (stmt->step != nullptr && step == nullptr)) {
        return nullptr;
    }
    tree::Stmt* result = makeStmt(StmtKind::loop, stmt->range);
    result->init = init;
    result->expr = test;
    result->step = step;
    result->body = body;
    result->testLast = stmt->kind == ast::StmtKind::doLoop;
    result->assigned = arena_.copy(assigned);
    result->mayReturn = body->mayReturn;
    return result;
}

// for (T x : array) walks the elements by a hidden index.
tree::Stmt* Sema::rangeLoop(const ast::Stmt* stmt) {
    tree::Expr* range = value(stmt->expr);
    if (range == nullptr) {
        return nullptr;
    }
    if (!range->type->isArray() || range->type->length == 0) {
        error(stmt->expr->range, "'for' walks arrays, not '" + toText(range->type) + "'");
        return nullptr;
    }
    const size_t mark = scope_.size();
    const size_t outerStart = scopeStart_;
    scopeStart_ = mark;
    auto* counter = arena_.make<tree::Variable>();
    counter->type = intType();
    counter->function = state_->function;
    counter->slot = state_->slots++;
    tree::Stmt* init = makeStmt(StmtKind::declare, stmt->range);
    init->variable = counter;
    init->expr = constantExpr(intType(), 0, stmt->range);
    state_->loops.push_back({{counter}, scope_.size(), false});
    tree::Expr* element = makeExpr(tree::ExprKind::index, range->type->element, stmt->expr->range);
    element->a = range;
    element->b = variableExpr(counter, stmt->range);
    element->lvalue = range->lvalue;
    element->isConst = range->isConst;
    element->space = range->space;
    finish(element);
    const auto* syntax = stmt->decl->variables[0];
    const auto* typeSyntax = syntax->type;
    const bool reference = typeSyntax->kind == ast::TypeSyntaxKind::reference;
    const auto* named = reference ? typeSyntax->element : typeSyntax;
    const Type* type =
        named->kind == ast::TypeSyntaxKind::automatic ? element->type : resolve(named);
    tree::Stmt* result = nullptr;
    if (type != nullptr) {
        tree::Variable* variable = makeVariable(*syntax, type, tree::VariableKind::local);
        variable->isReference = reference && element->lvalue;
        variable->isConst = named->isConst || (variable->isReference && element->isConst);
        variable->space = variable->isReference ? element->space : AddressSpace::thread;
        declare(SymbolKind::variable, syntax->name, syntax->range)->variable = variable;
        tree::Expr* item = convert(element, type, stmt->expr->range, "the element");
        if (variable->isReference) {
            noteAssigned(element);
        }
        tree::Stmt* body = item == nullptr ? nullptr : statement(stmt->body);
        if (body != nullptr) {
            tree::Stmt* declared = makeStmt(StmtKind::declare, stmt->range);
            declared->variable = variable;
            declared->expr = item;
            result = makeStmt(StmtKind::loop, stmt->range);
            result->init = init;
            result->expr =
                makeBinary(TokenKind::less, variableExpr(counter, stmt->range),
                           constantExpr(intType(), range->type->length, stmt->range), stmt->range);
            tree::Expr* step = makeExpr(tree::ExprKind::step, intType(), stmt->range);
            step->op = TokenKind::plusPlus;
            step->a = variableExpr(counter, stmt->range);
            result->step = finish(step);
            result->body = block({declared, body}, stmt->range);
            result->mayReturn = body->mayReturn;
        }
    }
    const auto assigned = std::move(state_->loops.back().assigned);
    state_->loops.pop_back();
    closeScope(mark);
    scopeStart_ = outerStart;
    if (result != nullptr) {
        result->assigned = arena_.copy(assigned);
    }
    return result;
}

tree::Stmt* Sema::multiway(const ast::Stmt* stmt) {
    tree::Expr* selector = value(stmt->expr);
    if (selector == nullptr) {
        return nullptr;
    }
    if (selector->type->isEnum()) {
        selector = convertTo(selector, selector->type->element);
    }
    selector = promote(selector);
    if (!selector->type->isInteger() || selector->type->size > 4) {
        error(stmt->expr->range,
              "'switch' takes a 32-bit integer, not '" + toText(selector->type) + "'");
        return nullptr;
    }
    tree::Stmt* result = makeStmt(StmtKind::multiway, stmt->range);
    result->expr = selector;
    std::vector<tree::Stmt*> items;
    std::vector<tree::Case> cases;
    const size_t mark = scope_.size();
    const size_t outerStart = scopeStart_;
    scopeStart_ = mark;
    state_->loops.push_back({{}, mark, true});
    bool good = true;
    for (const auto* item : stmt->body->items) {
        if (item->kind == ast::StmtKind::caseLabel || item->kind == ast::StmtKind::defaultLabel) {
            tree::Case label;
            label.position = static_cast<uint32_t>(items.size());
            label.isDefault = item->kind == ast::StmtKind::defaultLabel;
            if (!label.isDefault) {
                const auto known = integerConstant(item->expr, "a case");
                good = good && known.has_value();
                label.value = static_cast<uint32_t>(known.value_or(0));
            }
            for (const auto& other : cases) {
                if (other.isDefault == label.isDefault &&
                    (label.isDefault || other.value == label.value)) {
                    error(item->range, "this case stands twice in the 'switch'");
                    good = false;
                    break;
                }
            }
            cases.push_back(label);
            continue;
        }
        tree::Stmt* made = statement(item);
        good = good && made != nullptr;
        if (made != nullptr) {
            if (cases.empty()) {
                error(item->range, "this is never reached: it stands before the first case");
                good = false;
            }
            items.push_back(made);
            result->mayReturn = result->mayReturn || made->mayReturn;
        }
    }
    state_->loops.pop_back();
    closeScope(mark);
    scopeStart_ = outerStart;
    result->items = arena_.copy(items);
    result->cases = arena_.copy(cases);
    return good ? result : nullptr;
}

tree::Stmt* Sema::returnStatement(const ast::Stmt* stmt) {
    tree::Stmt* result = makeStmt(StmtKind::leave, stmt->range);
    result->mayReturn = result->alwaysReturns = true;
    if (stmt->expr == nullptr) {
        if (state_->result == nullptr) {
            state_->result = voidType();
        }
        if (!state_->result->isVoid()) {
            error(stmt->range, "this function returns '" + toText(state_->result) + "'");
            return nullptr;
        }
        return result;
    }
    if (state_->result == nullptr) {
        // The first 'return' says what 'auto' stands for.
        tree::Expr* expr =
            stmt->expr->kind != ast::ExprKind::list ? expression(stmt->expr) : nullptr;
        if (expr == nullptr) {
            return nullptr;
        }
        state_->result = unpacked(expr->type);
        const_cast<tree::Function*>(state_->function)->result = state_->result;
        pending_.emplace(stmt->expr, expr);
    }
    if (state_->result->isVoid()) {
        if (stmt->expr->kind != ast::ExprKind::list) {
            tree::Expr* expr = expression(stmt->expr);
            if (expr == nullptr) {
                return nullptr;
            }
            if (expr->type->isVoid()) {
                tree::Stmt* evaluated = makeStmt(StmtKind::expression, stmt->range);
                evaluated->expr = expr;
                return block({evaluated, result}, stmt->range);
            }
        }
        error(stmt->range, "this function returns nothing");
        return nullptr;
    }
    if (state_->function->returnsReference) {
        result->expr = value(stmt->expr);
        if (result->expr != nullptr &&
            (!result->expr->lvalue || result->expr->type != state_->result)) {
            error(stmt->range, "a reference to '" + toText(state_->result) +
                                   "' cannot refer to this value of the type '" +
                                   toText(result->expr->type) + "'");
            return nullptr;
        }
        return result->expr == nullptr ? nullptr : result;
    }
    result->expr = initialise(state_->result, stmt->expr, ast::InitKind::equal);
    return result->expr == nullptr ? nullptr : result;
}

tree::Stmt* Sema::localDeclaration(const ast::Decl* decl, Range range) {
    if (decl->typeDeclaration != nullptr && decl->typeDeclaration->isDefinition) {
        declaration(decl->typeDeclaration);
    }
    if (decl->kind != ast::DeclKind::variables) {
        const uint32_t before = diagnostics_.errorCount();
        if (decl->kind != ast::DeclKind::function) {
            declaration(decl);
        }
        return diagnostics_.errorCount() == before ? block({}, range) : nullptr;
    }
    std::vector<tree::Stmt*> items;
    bool good = true;
    for (const auto* variable : decl->variables) {
        tree::Stmt* made = localVariable(variable);
        good = good && made != nullptr;
        if (made != nullptr) {
            items.push_back(made);
        }
    }
    if (!good) {
        return nullptr;
    }
    return items.size() == 1 ? items[0] : block(items, range);
}

tree::Stmt* Sema::localVariable(const ast::Variable* syntax) {
    Symbol* previous = syntax->name != nullptr ? lookup(syntax->name) : nullptr;
    if (previous != nullptr && previous->space == nullptr && sameScope(*previous)) {
        error(syntax->range, "'" + std::string(syntax->name->text) + "' is declared twice");
        diagnostics_.note(previous->range, "the other declaration is here");
        return nullptr;
    }
    const auto* typeSyntax = syntax->type;
    const bool reference = typeSyntax->kind == ast::TypeSyntaxKind::reference;
    const auto* named = reference ? typeSyntax->element : typeSyntax;
    const Type* type = nullptr;
    tree::Expr* init = nullptr;
    bool good = true;
    if (named->kind == ast::TypeSyntaxKind::automatic ||
        (named->kind == ast::TypeSyntaxKind::pointer &&
         named->element->kind == ast::TypeSyntaxKind::automatic)) {
        const ast::Expr* source = syntax->init;
        if (source != nullptr && source->kind == ast::ExprKind::list && source->items.size() == 1) {
            source = source->items[0];
        }
        if (source == nullptr || source->kind == ast::ExprKind::list) {
            error(syntax->range, "'auto' needs a value to take its type from");
            good = false;
        } else {
            init = value(source);
            type = init == nullptr ? nullptr : init->type;
            if (type != nullptr && !reference) {
                type = unpacked(type);
                if (type->isArray()) {
                    type = types_.pointer(type->element, init->space, init->isConst);
                    init = convert(init, type, syntax->range, "the value");
                }
            }
        }
    } else if (named->kind == ast::TypeSyntaxKind::array) {
        type = resolveArray(named, syntax->init);
    } else {
        type = resolve(named);
    }
    // A wrong declaration still declares its name, so that its uses are not reported too.
    Symbol* symbol = declare(SymbolKind::variable, syntax->name, syntax->range);
    if (type == nullptr || !good) {
        return nullptr;
    }
    if (type->isVoid() || !checkSize(type, syntax->range) ||
        (type->isStruct() && !type->structure->complete)) {
        error(syntax->range, "a variable cannot have the type '" + toText(type) + "'");
        return nullptr;
    }
    tree::Variable* variable = makeVariable(*syntax, type, tree::VariableKind::local);
    symbol->variable = variable;
    state_->locals.push_back(variable);
    if (type->isSampler() && !reference && writesSampler(syntax->init)) {
        if (!samplerVariable(syntax, variable)) {
            symbol->variable = nullptr;
            return nullptr;
        }
        return block({}, syntax->range);
    }
    if (named->space == AddressSpace::threadgroup) {
        error(syntax->range, "threadgroup memory has no use in vertex and fragment functions");
        return nullptr;
    }
    tree::Stmt* result = makeStmt(StmtKind::declare, syntax->range);
    result->variable = variable;
    if (reference) {
        if (init == nullptr) {
            init = syntax->init != nullptr && syntax->init->kind != ast::ExprKind::list
                       ? value(syntax->init)
                       : nullptr;
        }
        if (init == nullptr) {
            if (syntax->init == nullptr) {
                error(syntax->range, "a reference needs something to refer to");
            }
            symbol->variable = nullptr;
            return nullptr;
        }
        variable->isReference = true;
        variable->isConst = named->isConst || named->space == AddressSpace::constant;
        variable->space = named->kind == ast::TypeSyntaxKind::automatic && init->lvalue
                              ? init->space
                          : named->space == AddressSpace::none ? AddressSpace::thread
                                                               : named->space;
        if (named->kind == ast::TypeSyntaxKind::automatic && init->isConst) {
            variable->isConst = true;
        }
        if (!bindsReference(*variable, init)) {
            error(syntax->init->range, "a reference to '" + toText(type) +
                                           "' cannot refer to this value of the type '" +
                                           toText(init->type) + "'");
            symbol->variable = nullptr;
            return nullptr;
        }
        init = init->lvalue ? asBase(init, type) : init;
        if (init->type != type || !init->lvalue) {
            init = convertTo(init, type);
            variable->isReference = false;
        } else if (!variable->isConst) {
            noteAssigned(init);
        }
        result->expr = init;
        return result;
    }
    if (init == nullptr && syntax->init != nullptr) {
        init = initialise(type, syntax->init, syntax->initKind);
        if (init == nullptr) {
            symbol->variable = nullptr;
            return nullptr;
        }
    } else if (init == nullptr) {
        const auto* record = recordOf(type);
        if (variable->isConst) {
            error(syntax->range,
                  "the constant '" + std::string(syntax->name->text) + "' needs a value");
            symbol->variable = nullptr;
            return nullptr;
        }
        if ((record != nullptr && !record->defaults.empty()) ||
            defaultConstructor(type) != nullptr) {
            init = defaultValue(type, syntax->range);
        }
    }
    if (variable->isConst) {
        variable->init = init;
    }
    if (type->isPointer() && init != nullptr) {
        noteAssigned(init);
    }
    if (syntax->isConstexpr && init != nullptr && type->isScalar()) {
        constantSteps_ = 0;
        if (const auto known = evaluate(init)) {
            variable->init = init = constantExpr(type, known->bits, init->range);
        }
    }
    result->expr = init;
    return result;
}

} // namespace msl
