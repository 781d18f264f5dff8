// Interned identifiers. Each distinct spelling has one entry per compilation, so that names compare
// by address and every stage finds what it knows of a name in the entry itself.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "msl/source/arena.h"

namespace msl {

struct Macro;
struct Symbol;
struct Type;

enum class Keyword : uint8_t {
    none,
    alignasWord,
    alignofWord,
    asType,
    autoWord,
    boolWord,
    breakWord,
    caseWord,
    charWord,
    classWord,
    constWord,
    constantWord,
    constexprWord,
    constevalWord,
    continueWord,
    decltypeWord,
    defaultWord,
    deleteWord,
    deviceWord,
    doWord,
    elseWord,
    enumWord,
    explicitWord,
    externWord,
    falseWord,
    floatWord,
    forWord,
    fragmentWord,
    friendWord,
    gotoWord,
    halfWord,
    ifWord,
    inlineWord,
    intWord,
    kernelWord,
    longWord,
    namespaceWord,
    nullptrWord,
    operatorWord,
    privateWord,
    protectedWord,
    publicWord,
    returnWord,
    shortWord,
    signedWord,
    sizeofWord,
    staticWord,
    staticAssertWord,
    staticCastWord,
    structWord,
    switchWord,
    templateWord,
    thisWord,
    threadWord,
    threadgroupWord,
    trueWord,
    typedefWord,
    typenameWord,
    unionWord,
    unsignedWord,
    usingWord,
    vertexWord,
    virtualWord,
    voidWord,
    volatileWord,
    whileWord,
    reinterpretCastWord,
    constCastWord,
    doubleWord,
    noexceptWord,
    registerWord,
    mutableWord,
    attributeWord,
    // other spellings of operators, which the lexer replaces
    andWord,
    andEqualWord,
    bitandWord,
    bitorWord,
    complWord,
    notWord,
    notEqualWord,
    orWord,
    orEqualWord,
    xorWord,
    xorEqualWord,
};

// What the parser knows a name to be at the place it has reached.
enum class ParserKind : uint8_t { unknown, value, type, typeTemplate, functionTemplate, space };

struct NameEntry {
    std::string_view text;
    uint32_t hash = 0;
    Keyword keyword = Keyword::none;
    ParserKind parserKind = ParserKind::unknown;
    bool macroKnown = false;       // the predefined macros have been searched for it
    bool builtinTypeKnown = false; // builtinType has been looked up
    bool libraryKnown = false;     // libraryFirst and libraryCount have been looked up
    uint16_t libraryFirst = 0;
    uint16_t libraryCount = 0;
    Macro* macro = nullptr;
    Symbol* symbol = nullptr; // innermost declaration in scope (semantic analysis)
    const Type* builtinType = nullptr;
};
using Name = NameEntry*;

constexpr uint32_t kNameHashSeed = 2166136261U;
constexpr uint32_t nameHashStep(uint32_t hash, char c) { // FNV-1a
    return (hash ^ static_cast<uint8_t>(c)) * 16777619U;
}
constexpr uint32_t nameHash(std::string_view text) {
    uint32_t hash = kNameHashSeed;
    for (const char c : text) {
        hash = nameHashStep(hash, c);
    }
    return hash;
}

class NameTable {
  public:
    explicit NameTable(Arena& arena);

    Name intern(std::string_view text) { return intern(text, nameHash(text)); }
    Name intern(std::string_view text, uint32_t hash);

    bool contains(std::string_view text) const;

    // Every name met so far, for suggestions.
    const std::vector<Name>& all() const { return names_; }

  private:
    void grow();

    Arena& arena_;
    std::vector<Name> slots_;
    std::vector<Name> names_;
};

} // namespace msl
