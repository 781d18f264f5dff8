#include <algorithm>

#include "msl/library/unsupported.h"
#include "msl/parser/nesting.h"
#include "msl/parser/parser.h"

namespace msl {

using namespace ast;

TypeSyntax* Parser::builtinSyntax(const Type* type, Range range) {
    auto* syntax = arena_.make<TypeSyntax>();
    syntax->kind = TypeSyntaxKind::builtin;
    syntax->builtin = type;
    syntax->range = range;
    return syntax;
}

// How many tokens of "a::b::" stand at `ahead`.
size_t Parser::skipQualifiers(size_t ahead) const {
    size_t i = ahead;
    if (peek(i).is(TokenKind::colonColon)) {
        ++i;
    }
    while (peek(i).is(TokenKind::identifier) && peek(i + 1).is(TokenKind::colonColon)) {
        i += 2;
    }
    return i - ahead;
}

// How many tokens the name at `ahead` has, with its qualifiers and template arguments.
size_t Parser::skipName(size_t ahead) const {
    size_t i = ahead + skipQualifiers(ahead) + 1;
    constexpr size_t kLongest = 400;
    while (peek(i).is(TokenKind::less) && peek(i - 1).is(TokenKind::identifier)) {
        size_t depth = 0;
        do {
            depth += peek(i).is(TokenKind::less) ? 1U : 0U;
            const size_t closed = peek(i).is(TokenKind::greater)      ? 1U
                                  : peek(i).is(TokenKind::shiftRight) ? 2U
                                                                      : 0U;
            depth -= std::min(depth, closed);
            if (peek(i).is(TokenKind::semicolon) || peek(i).is(TokenKind::endOfFile) ||
                i > ahead + kLongest) {
                return i - ahead;
            }
            ++i;
        } while (depth > 0);
        if (peek(i).is(TokenKind::colonColon)) {
            i += skipQualifiers(i) + 1;
        }
    }
    return i - ahead;
}

// Whether the next tokens name a type.
bool Parser::startsType() const {
    const Token& token = peek(skipQualifiers(0));
    if (!token.is(TokenKind::identifier)) {
        return false;
    }
    switch (token.name->keyword) {
    case Keyword::boolWord:
    case Keyword::charWord:
    case Keyword::shortWord:
    case Keyword::intWord:
    case Keyword::longWord:
    case Keyword::halfWord:
    case Keyword::floatWord:
    case Keyword::doubleWord:
    case Keyword::voidWord:
    case Keyword::unsignedWord:
    case Keyword::signedWord:
    case Keyword::autoWord:
    case Keyword::decltypeWord:
    case Keyword::structWord:
    case Keyword::classWord:
    case Keyword::unionWord:
    case Keyword::enumWord:
    case Keyword::typenameWord:
    case Keyword::constWord:
    case Keyword::volatileWord:
    case Keyword::constantWord:
    case Keyword::deviceWord:
    case Keyword::threadWord:
    case Keyword::threadgroupWord:
        return true;
    case Keyword::none:
        break;
    default:
        return false;
    }
    const auto kind = token.name->parserKind;
    if (kind == ParserKind::type || kind == ParserKind::typeTemplate) {
        return true;
    }
    const size_t qualifiers = skipQualifiers(0);
    if (qualifiers > 1 && peek(qualifiers + 1).is(TokenKind::identifier) &&
        peek(qualifiers + 1).name->keyword == Keyword::none) {
        return true; // A::B c
    }
    if (kind != ParserKind::unknown) {
        return false;
    }
    if (builtinTypeOf(token.name) != nullptr) {
        return true;
    }
    const auto text = token.name->text;
    return (text.starts_with("texture") || text.starts_with("depth") || text == "vec" ||
            text == "array" || text == "matrix" || text == "atomic" ||
            !unsupportedReason(text).empty()) &&
           peek(skipQualifiers(0) + 1).is(TokenKind::less);
}

// Whether a statement that starts here declares something: a type that is not at once called.
bool Parser::startsDeclaration() const {
    if (!at(TokenKind::identifier) && !at(TokenKind::colonColon)) {
        return at(TokenKind::leftBracket) && peek(1).is(TokenKind::leftBracket);
    }
    switch (at(TokenKind::identifier) ? peek().name->keyword : Keyword::none) {
    case Keyword::typedefWord:
    case Keyword::usingWord:
    case Keyword::staticWord:
    case Keyword::constexprWord:
    case Keyword::inlineWord:
    case Keyword::externWord:
    case Keyword::staticAssertWord:
    case Keyword::namespaceWord:
    case Keyword::decltypeWord:
    case Keyword::templateWord:
        return true;
    default:
        break;
    }
    if (!startsType()) {
        return false;
    }
    const size_t after = skipName(0);
    const auto kind = peek(after).kind;
    const bool scopedName =
        peek(after - 1).is(TokenKind::identifier) && peek(after).is(TokenKind::colonColon);
    return kind != TokenKind::leftParen && kind != TokenKind::leftBrace && !scopedName;
}

QualifiedName* Parser::qualifiedName(bool asType) {
    auto* result = arena_.make<QualifiedName>();
    const Token& first = peek();
    std::vector<Name> spaces;
    accept(TokenKind::colonColon);
    while (at(TokenKind::identifier) && peek(1).is(TokenKind::colonColon)) {
        spaces.push_back(advance().name);
        advance();
    }
    if (accept(Keyword::operatorWord)) {
        if (!operatorName(*result)) {
            return nullptr;
        }
    } else {
        accept(Keyword::templateWord); // x.template f<T>()
        Range range;
        if (!expectName(result->name, range, asType ? "a type" : "a name")) {
            return nullptr;
        }
    }
    result->spaces = arena_.copy(spaces);
    result->range = rangeFrom(first);
    const bool isTemplate =
        result->name->parserKind == ParserKind::typeTemplate ||
        result->name->parserKind == ParserKind::functionTemplate ||
        (asType && at(TokenKind::less) && result->name->parserKind == ParserKind::unknown);
    if (isTemplate && at(TokenKind::less)) {
        std::vector<TemplateArgument> list;
        if (!templateArguments(list)) {
            return nullptr;
        }
        result->hasArguments = true;
        result->arguments = arena_.copy(list);
        result->range = rangeFrom(first);
        if (at(TokenKind::colonColon)) {
            QualifiedName* inner = qualifiedName(asType);
            if (inner == nullptr) {
                return nullptr;
            }
            QualifiedName* outermost = inner;
            while (outermost->owner != nullptr) {
                outermost = outermost->owner;
            }
            outermost->owner = result;
            inner->range = rangeFrom(first);
            return inner;
        }
    }
    return result;
}

// What follows the word "operator".
bool Parser::operatorName(QualifiedName& name) {
    std::string text = "operator";
    if (at(TokenKind::leftParen) || at(TokenKind::leftBracket)) {
        text += at(TokenKind::leftParen) ? "()" : "[]";
        advance();
        advance();
    } else if (at(TokenKind::identifier)) {
        name.conversion = typeName();
        if (name.conversion == nullptr) {
            return false;
        }
        text += " type";
    } else {
        text += spelling(advance().kind);
    }
    name.name = names_.intern(text);
    return true;
}

// Takes one '>' off the front, which may be the half of a '>>'.
bool Parser::closeAngle() {
    if (at(TokenKind::greater)) {
        advance();
        return true;
    }
    if (at(TokenKind::shiftRight)) {
        if (halfAngle_) {
            advance();
        }
        halfAngle_ = !halfAngle_;
        return true;
    }
    unexpected("'>'");
    return false;
}

bool Parser::templateArguments(std::vector<TemplateArgument>& list) {
    const Nesting nesting(*this);
    if (nesting.refused()) {
        return false;
    }
    advance();
    ++angleDepth_;
    bool good = true;
    while (good && !at(TokenKind::greater) && !at(TokenKind::shiftRight)) {
        TemplateArgument argument;
        // A<T>::b is a value unless "typename" says that it is a type.
        const size_t length = skipName(0);
        const bool memberOfTemplate = length > 3 && peek(length - 2).is(TokenKind::colonColon) &&
                                      (peek(length - 3).is(TokenKind::greater) ||
                                       peek(length - 3).is(TokenKind::shiftRight)) &&
                                      !at(Keyword::typenameWord);
        if (startsType() && !memberOfTemplate) {
            argument.type = typeName(&argument.expands);
            good = argument.type != nullptr;
        } else {
            argument.value = binary(1);
            good = argument.value != nullptr;
        }
        argument.expands = accept(TokenKind::ellipsis) || argument.expands;
        list.push_back(argument);
        if (!accept(TokenKind::comma)) {
            break;
        }
    }
    --angleDepth_;
    return good && closeAngle();
}

void Parser::attributeArgument(Attribute& attribute) {
    if (at(TokenKind::string)) {
        const auto text = advance().text();
        attribute.string = text.size() >= 2 ? text.substr(1, text.size() - 2) : text;
        return;
    }
    if (at(TokenKind::identifier) && peek(1).is(TokenKind::rightParen)) {
        attribute.word = peek().name;
    }
    if (attribute.word != nullptr && attribute.word->keyword != Keyword::none) {
        advance();
    } else if (!at(TokenKind::rightParen)) {
        attribute.argument = expression();
    }
}

std::vector<Attribute> Parser::attributes() {
    std::vector<Attribute> list;
    while (true) {
        if (at(Keyword::attributeWord) || at(Keyword::alignasWord)) {
            advance();
            uint32_t nesting = 0;
            do {
                nesting += at(TokenKind::leftParen) ? 1U : 0U;
                nesting -= at(TokenKind::rightParen) ? 1U : 0U;
                advance();
            } while (nesting > 0 && !at(TokenKind::endOfFile));
            continue;
        }
        if (!at(TokenKind::leftBracket) || !peek(1).is(TokenKind::leftBracket)) {
            return list;
        }
        advance();
        advance();
        while (at(TokenKind::identifier)) {
            Attribute attribute;
            attribute.range = peek().range();
            attribute.name = advance().name;
            bool foreign = false;
            while (accept(TokenKind::colonColon)) {
                attribute.name = advance().name;
                foreign = true;
            }
            if (accept(TokenKind::leftParen)) {
                attributeArgument(attribute);
                if (!expect(TokenKind::rightParen, "after the attribute's argument")) {
                    return list;
                }
            }
            if (!foreign) {
                list.push_back(attribute);
            }
            if (!accept(TokenKind::comma)) {
                break;
            }
        }
        if (!expect(TokenKind::rightBracket, "after the attribute") ||
            !expect(TokenKind::rightBracket, "after the attribute")) {
            return list;
        }
    }
}

bool Parser::specifiers(Specifiers& result) {
    const Token& first = peek();
    bool seen = false;
    auto list = attributes();
    while (true) {
        if (at(TokenKind::leftBracket) && peek(1).is(TokenKind::leftBracket)) {
            for (const auto& attribute : attributes()) {
                list.push_back(attribute);
            }
            continue;
        }
        if (!typeSpecifier(result, seen)) {
            break;
        }
    }
    result.attributes = arena_.copy(list);
    if (result.type == nullptr && at(Keyword::operatorWord)) {
        result.isConversion = true;
        result.type = builtinSyntax(voidType(), first.range());
    }
    if (result.type == nullptr) {
        if (!diagnostics_.exhausted()) {
            if (const auto reason =
                    atIdentifier() ? unsupportedReason(peek().name->text) : std::string_view();
                !reason.empty()) {
                error(peek(), std::string(reason));
            } else if (atIdentifier()) {
                error(peek(), "there is no type named '" + std::string(peek().name->text) + "'");
                const auto here = nameHere(peek().name->text);
                if (!here.empty()) {
                    diagnostics_.note(peek().range(),
                                      "the language calls it '" + std::string(here) + "'");
                }
                for (const auto name : names_.all()) {
                    if (here.empty() &&
                        (name->parserKind == ParserKind::type || builtinTypeOf(name) != nullptr) &&
                        name != peek().name &&
                        editDistance(name->text, peek().name->text, 2) <= 2) {
                        diagnostics_.note(peek().range(),
                                          "did you mean '" + std::string(name->text) + "'?");
                        break;
                    }
                }
            } else {
                unexpected("a declaration");
            }
        }
        return false;
    }
    result.type->isConst = result.type->isConst || result.isConst || result.isConstexpr;
    if (result.space != AddressSpace::none) {
        result.type->space = result.space;
    }
    if (result.type->range.length == 0) {
        result.type->range = rangeFrom(first);
    }
    return true;
}

// One word of a declaration's beginning. False where none follows.
bool Parser::typeSpecifier(Specifiers& result, bool& seen) {
    const Token& token = peek();
    if (!token.is(TokenKind::identifier) && !token.is(TokenKind::colonColon)) {
        return false;
    }
    const auto word = token.is(TokenKind::identifier) ? token.name->keyword : Keyword::none;
    switch (word) {
    case Keyword::constWord:
        result.isConst = true;
        advance();
        return true;
    case Keyword::constexprWord:
        result.isConstexpr = true;
        advance();
        return true;
    case Keyword::staticWord:
        result.isStatic = true;
        advance();
        return true;
    case Keyword::typedefWord:
        result.isTypedef = true;
        advance();
        return true;
    case Keyword::explicitWord:
        result.isExplicit = true;
        advance();
        return true;
    case Keyword::inlineWord:
    case Keyword::externWord:
    case Keyword::volatileWord:
    case Keyword::mutableWord:
    case Keyword::registerWord:
    case Keyword::typenameWord:
    case Keyword::virtualWord:
    case Keyword::friendWord:
        advance();
        return true;
    case Keyword::attributeWord:
    case Keyword::alignasWord:
        attributes();
        return true;
    case Keyword::constantWord:
    case Keyword::deviceWord:
    case Keyword::threadWord:
    case Keyword::threadgroupWord:
        result.space = addressSpaceWord();
        advance();
        return true;
    case Keyword::vertexWord:
        result.stage = FunctionStage::vertex;
        advance();
        return true;
    case Keyword::fragmentWord:
        result.stage = FunctionStage::fragment;
        advance();
        return true;
    case Keyword::kernelWord:
        result.stage = FunctionStage::kernel;
        advance();
        return true;
    default:
        break;
    }
    if (seen) {
        return false;
    }
    if (word == Keyword::structWord || word == Keyword::classWord || word == Keyword::unionWord ||
        word == Keyword::enumWord) {
        bool definition = false;
        const Token& start = token;
        Decl* decl = word == Keyword::enumWord ? enumDeclaration() : structDeclaration(definition);
        if (decl == nullptr) {
            return false;
        }
        auto* syntax = arena_.make<TypeSyntax>();
        syntax->kind = TypeSyntaxKind::declared;
        syntax->declared = decl;
        syntax->range = {start.location, start.length};
        result.type = syntax;
        result.defined = decl;
        return seen = true;
    }
    if (word == Keyword::unsignedWord || word == Keyword::signedWord) {
        const bool isUnsigned = word == Keyword::unsignedWord;
        const Token& first = advance();
        TypeKind kind = isUnsigned ? TypeKind::uintType : TypeKind::intType;
        if (accept(Keyword::charWord)) {
            kind = isUnsigned ? TypeKind::ucharType : TypeKind::charType;
        } else if (accept(Keyword::shortWord)) {
            kind = isUnsigned ? TypeKind::ushortType : TypeKind::shortType;
            accept(Keyword::intWord);
        } else if (accept(Keyword::longWord)) {
            kind = isUnsigned ? TypeKind::ulongType : TypeKind::longType;
            accept(Keyword::longWord);
            accept(Keyword::intWord);
        } else {
            accept(Keyword::intWord);
        }
        result.type = builtinSyntax(scalarType(kind), rangeFrom(first));
        return seen = true;
    }
    if (word == Keyword::autoWord) {
        auto* syntax = builtinSyntax(nullptr, advance().range());
        syntax->kind = TypeSyntaxKind::automatic;
        result.type = syntax;
        return seen = true;
    }
    if (word == Keyword::decltypeWord) {
        const Token& first = advance();
        if (!expect(TokenKind::leftParen, "after 'decltype'")) {
            return false;
        }
        auto* syntax = builtinSyntax(nullptr, first.range());
        syntax->kind = TypeSyntaxKind::typeOf;
        syntax->operand = expression();
        if (syntax->operand == nullptr || !expect(TokenKind::rightParen, "after the expression")) {
            return false;
        }
        result.type = syntax;
        return seen = true;
    }
    if (word == Keyword::doubleWord) {
        error(token, "the language has no 'double'; 'float' is its widest floating-point type");
        advance();
        result.type = builtinSyntax(floatType(), token.range());
        return seen = true;
    }
    const size_t qualifiers = skipQualifiers(0);
    const Token& last = peek(qualifiers);
    // Where a type must follow, A::B names one before whatever may follow a type.
    const auto following = peek(qualifiers + 1).kind;
    const bool memberType =
        qualifiers > 1 && last.is(TokenKind::identifier) &&
        (following == TokenKind::ampersand || following == TokenKind::star ||
         following == TokenKind::greater || following == TokenKind::comma ||
         following == TokenKind::semicolon || following == TokenKind::rightParen);
    const bool ofBase = derived_ && atIdentifier() &&
                        token.name->parserKind == ParserKind::unknown &&
                        (following == TokenKind::identifier || following == TokenKind::ampersand ||
                         following == TokenKind::star);
    if (!startsType() && !memberType && !ofBase) {
        return false;
    }
    const bool user = last.name->parserKind == ParserKind::type ||
                      last.name->parserKind == ParserKind::typeTemplate;
    if (!user && builtinTypeOf(last.name) != nullptr) {
        for (size_t i = 0; i <= qualifiers; ++i) {
            advance();
        }
        const Type* type = builtinTypeOf(last.name);
        if (word == Keyword::longWord || word == Keyword::shortWord) {
            accept(Keyword::longWord);
            accept(Keyword::intWord);
        }
        result.type = builtinSyntax(type, last.range());
        return seen = true;
    }
    auto* name = qualifiedName(true);
    if (name == nullptr) {
        return false;
    }
    auto* syntax = arena_.make<TypeSyntax>();
    syntax->kind = TypeSyntaxKind::named;
    syntax->name = name;
    syntax->range = name->range;
    result.type = syntax;
    return seen = true;
}

bool Parser::arraySuffixes(TypeSyntax*& type) {
    std::vector<std::pair<Expr*, Range>> lengths;
    while (at(TokenKind::leftBracket) && !peek(1).is(TokenKind::leftBracket)) {
        const Token& open = advance();
        Expr* length = nullptr;
        if (!at(TokenKind::rightBracket)) {
            length = expression();
            if (length == nullptr) {
                return false;
            }
        }
        if (!expect(TokenKind::rightBracket, "after the array's length")) {
            return false;
        }
        if (lengths.size() >= kMaxNesting / 4) {
            error(open, "an array has too many dimensions");
            return false;
        }
        lengths.emplace_back(length, rangeFrom(open));
    }
    for (auto i = lengths.rbegin(); i != lengths.rend(); ++i) {
        auto* array = arena_.make<TypeSyntax>();
        array->kind = TypeSyntaxKind::array;
        array->element = type;
        array->length = i->first;
        array->range = i->second;
        array->isConst = type->isConst;
        array->space = type->space;
        type = array;
    }
    return true;
}

bool Parser::declarator(const Specifiers& specifiers, Declarator& result, bool abstract) {
    const Nesting nesting(*this);
    if (nesting.refused()) {
        return false;
    }
    // Several declarators may share the specifiers, and some change the type they start from.
    result.type = arena_.make<TypeSyntax>(*specifiers.type);
    const bool grouped = at(TokenKind::leftParen) &&
                         (peek(1).is(TokenKind::ampersand) || peek(1).is(TokenKind::star));
    if (grouped) {
        advance();
    }
    TypeSyntax* outer = nullptr;
    uint32_t count = 0;
    while (true) {
        if (at(TokenKind::star) || at(TokenKind::ampersand)) {
            if (++count > 8) {
                error(peek(), "a type has too many levels of pointers");
                return false;
            }
            auto* pointer = arena_.make<TypeSyntax>();
            pointer->kind =
                at(TokenKind::star) ? TypeSyntaxKind::pointer : TypeSyntaxKind::reference;
            pointer->range = advance().range();
            pointer->element = result.type;
            if (grouped) {
                outer = pointer;
            }
            result.type = pointer;
        } else if (at(Keyword::constWord)) {
            advance();
            result.type->isConst = true;
        } else if (const auto space = addressSpaceWord(); space != AddressSpace::none) {
            result.type->space = space;
            advance();
        } else if (at(Keyword::volatileWord)) {
            advance();
        } else {
            break;
        }
    }
    result.isPack = accept(TokenKind::ellipsis);
    if (atIdentifier() || at(Keyword::operatorWord) ||
        (at(TokenKind::identifier) && peek(1).is(TokenKind::colonColon))) {
        result.range = peek().range();
        result.name = qualifiedName(false);
        if (result.name == nullptr) {
            return false;
        }
        result.range = result.name->range;
        if (at(TokenKind::leftBracket) && peek(1).is(TokenKind::leftBracket)) {
            result.attributes = attributes();
        }
    } else if (!abstract) {
        unexpected("a name");
        return false;
    }
    if (grouped) {
        if (!expect(TokenKind::rightParen, "after the declarator")) {
            return false;
        }
        if (outer != nullptr) {
            return arraySuffixes(outer->element);
        }
    }
    return at(TokenKind::leftParen) || arraySuffixes(result.type);
}

// `expands`, where an expansion may stand, says whether one does.
TypeSyntax* Parser::typeName(bool* expands) {
    const Nesting nesting(*this);
    if (nesting.refused()) {
        return nullptr;
    }
    Specifiers parts;
    Declarator result;
    if (!specifiers(parts) || !declarator(parts, result, true)) {
        return nullptr;
    }
    if (expands != nullptr) {
        *expands = result.isPack;
    } else if (result.isPack) {
        error(tokens_[position_ - 1], "a parameter pack cannot be expanded here");
        return nullptr;
    }
    return result.type;
}

} // namespace msl
