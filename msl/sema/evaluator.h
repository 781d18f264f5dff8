// Evaluates expressions and functions while compiling, where the language needs a constant.
#pragma once

#include <deque>

#include "msl/sema/sema.h"

namespace msl {

// A value is its scalars in line, each as a Scalar's bits. What has no such value (pointers,
// textures, unions) and what is not known when compiling has none.
class Sema::Evaluator {
  public:
    explicit Evaluator(Sema& sema) : sema_(sema) {}

    std::optional<Scalar> scalar(const tree::Expr* expr);

  private:
    using Value = std::vector<uint64_t>;
    // Some of the scalars of a variable, or of a value that is on its way.
    struct Place {
        Value* cell = nullptr;
        size_t offset = 0;
    };
    struct Frame {
        std::unordered_map<const tree::Variable*, Place> variables;
        Value result;
    };
    enum class Flow : uint8_t { next, breaks, continues, returns, fails };

    static size_t scalarCount(const Type* type);
    static const Type* scalarOf(const Type* type);
    bool spend(size_t scalars = 0);
    Place hold(Value value);
    void give(const tree::Variable* variable, Place place);

    std::optional<Value> value(const tree::Expr* expr);
    std::optional<Value> valueAtDepth(const tree::Expr* expr);
    std::optional<Place> place(const tree::Expr* expr);
    std::optional<Place> variable(const tree::Variable& variable);
    std::optional<Value> byComponent(const tree::Expr* expr);
    std::optional<Value> converted(const Value& value, const Type* from, const Type* to) const;
    std::optional<Value> construct(const tree::Expr* expr);
    std::optional<Value> assign(const tree::Expr* expr);
    std::optional<Value> step(const tree::Expr* expr);
    std::optional<Value> call(const tree::Expr* expr);
    bool bind(Frame& frame, const tree::Variable& parameter, const tree::Expr* argument);
    bool truth(const tree::Expr* expr, bool& result);

    Flow run(const tree::Stmt* stmt);
    Flow runAtDepth(const tree::Stmt* stmt);
    Flow runAll(std::span<tree::Stmt* const> list);
    Flow loop(const tree::Stmt* stmt);
    Flow multiway(const tree::Stmt* stmt);

    Sema& sema_;
    Frame outermost_;
    Frame* frame_ = &outermost_;
    std::deque<Value> cells_;
};

} // namespace msl
