// One call of a texture's member function, on its way to the typed tree.
#pragma once

#include "msl/sema/sema.h"

namespace msl {

class Sema::TextureCall {
  public:
    TextureCall(Sema& sema, const ast::Expr* expr, tree::Expr* texture,
                const LibraryFunction& member);

    tree::Expr* analyse();

  private:
    bool take(size_t place, const Type* wanted, std::string_view what);
    bool sampling();
    bool lodOption(const ast::Expr* option, std::string_view word);
    bool offsetOption();
    bool texel();
    bool reading();
    bool writing();
    bool query();
    const Type* four() const { return vectorType(type_.element->kind, 4); }

    Sema& sema_;
    std::span<ast::Expr* const> given_;
    size_t next_ = 0; // of `given_`
    Range range_;
    const Type& type_;
    const LibraryFunction& member_;
    std::vector<tree::Expr*> items_;
    tree::Expr* result_ = nullptr;
    uint32_t coordinates_ = 1;
    bool cube_ = false;
    bool arrayed_ = false;
    bool multisampled_ = false;
};

} // namespace msl
