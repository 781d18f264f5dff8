#include "msl/parser/nesting.h"
#include "msl/parser/parser.h"

namespace msl {

using namespace ast;

Decl* Parser::declaration(bool member) {
    const Nesting nesting(*this);
    return nesting.refused() ? nullptr : declarationAtDepth(member);
}

Decl* Parser::declarationAtDepth(bool member) {
    switch (at(TokenKind::identifier) ? peek().name->keyword : Keyword::none) {
    case Keyword::namespaceWord:
        return spaceDeclaration();
    case Keyword::inlineWord:
        if (peek(1).is(Keyword::namespaceWord)) {
            advance();
            Decl* decl = spaceDeclaration();
            if (decl != nullptr) {
                decl->isInline = true;
            }
            return decl;
        }
        break;
    case Keyword::usingWord:
        return usingDeclaration();
    case Keyword::templateWord:
        return templateDeclaration(member);
    case Keyword::staticAssertWord:
        return staticAssertion();
    default:
        break;
    }
    return simpleDeclaration(member, {}, false);
}

Decl* Parser::spaceDeclaration() {
    Decl* decl = makeDecl(DeclKind::space, advance().range());
    attributes();
    std::vector<Name> path;
    while (atIdentifier()) {
        path.push_back(advance().name);
        path.back()->parserKind = ParserKind::space;
        if (!accept(TokenKind::colonColon)) {
            break;
        }
    }
    if (!path.empty() && accept(TokenKind::equal)) {
        decl->name = path.front();
        decl->target = qualifiedName(false);
        return decl->target != nullptr && expect(TokenKind::semicolon, "after the alias") ? decl
                                                                                          : nullptr;
    }
    if (!expect(TokenKind::leftBrace, "at the start of the namespace")) {
        return nullptr;
    }
    std::vector<Decl*> members;
    while (!at(TokenKind::rightBrace) && !at(TokenKind::endOfFile) && !diagnostics_.exhausted()) {
        if (accept(TokenKind::semicolon)) {
            continue;
        }
        const size_t before = position_;
        if (Decl* memberDecl = declaration(false)) {
            members.push_back(memberDecl);
        } else {
            skipTo(true);
            if (position_ == before) {
                advance();
            }
        }
    }
    if (!expect(TokenKind::rightBrace, "at the end of the namespace")) {
        return nullptr;
    }
    decl->members = arena_.copy(members);
    for (size_t i = path.size(); i > 1; --i) {
        Decl* outer = makeDecl(DeclKind::space, decl->range);
        decl->name = path[i - 1];
        outer->members = arena_.copy(std::vector<Decl*>{decl});
        decl = outer;
    }
    decl->name = path.empty() ? nullptr : path.front();
    return decl;
}

Decl* Parser::usingDeclaration() {
    const Token& first = advance();
    if (accept(Keyword::namespaceWord)) {
        Decl* decl = makeDecl(DeclKind::usingSpace, first.range());
        decl->target = qualifiedName(false);
        return decl->target != nullptr && expect(TokenKind::semicolon, "after the namespace")
                   ? decl
                   : nullptr;
    }
    if (atIdentifier() && peek(1).is(TokenKind::equal)) {
        Decl* decl = makeDecl(DeclKind::alias, peek().range());
        decl->name = advance().name;
        advance();
        decl->type = typeName();
        if (decl->type == nullptr || !expect(TokenKind::semicolon, "after the type")) {
            return nullptr;
        }
        declare(decl->name, ParserKind::type);
        return decl;
    }
    Decl* decl = makeDecl(DeclKind::usingName, first.range());
    decl->target = qualifiedName(false);
    return decl->target != nullptr && expect(TokenKind::semicolon, "after the name") ? decl
                                                                                     : nullptr;
}

Decl* Parser::staticAssertion() {
    Decl* decl = makeDecl(DeclKind::staticAssert, advance().range());
    if (!expect(TokenKind::leftParen, "after 'static_assert'")) {
        return nullptr;
    }
    decl->condition = assignment();
    if (decl->condition == nullptr) {
        return nullptr;
    }
    if (accept(TokenKind::comma)) {
        while (accept(TokenKind::string)) {
        }
    }
    return expect(TokenKind::rightParen, "after the assertion") &&
                   expect(TokenKind::semicolon, "after the assertion")
               ? decl
               : nullptr;
}

Decl* Parser::templateDeclaration(bool member) {
    advance();
    if (!at(TokenKind::less)) {
        return instantiation();
    }
    advance();
    const size_t mark = openScope();
    std::vector<TemplateParameter> list;
    ++angleDepth_;
    while (!at(TokenKind::greater)) {
        TemplateParameter parameter;
        if (!templateParameter(parameter)) {
            return nullptr;
        }
        list.push_back(parameter);
        if (!accept(TokenKind::comma)) {
            break;
        }
    }
    --angleDepth_;
    if (!closeAngle()) {
        return nullptr;
    }
    Decl* decl = nullptr;
    if (at(Keyword::usingWord)) {
        decl = usingDeclaration();
        if (decl != nullptr && decl->kind != DeclKind::alias) {
            diagnostics_.error(decl->range, "only an alias can be a template here");
            return nullptr;
        }
        if (decl != nullptr) {
            decl->templateParameters = arena_.copy(list);
            decl->isTemplate = true;
        }
    } else if (at(Keyword::templateWord)) {
        error(peek(), "templates of members of templates are defined inside their struct");
        return nullptr;
    } else {
        inTemplate_ = true;
        decl = simpleDeclaration(member, arena_.copy(list), true);
        inTemplate_ = false;
    }
    closeScope(mark);
    if (decl == nullptr) {
        return nullptr;
    }
    if (decl->kind != DeclKind::function && decl->kind != DeclKind::variables &&
        decl->name == nullptr) {
        diagnostics_.error(decl->range, "a template needs a name");
        return nullptr;
    }
    switch (decl->kind) {
    case DeclKind::function:
        declare(decl->function->name, ParserKind::functionTemplate);
        break;
    case DeclKind::variables:
        declare(decl->variables[0]->name, ParserKind::functionTemplate);
        break;
    default:
        declare(decl->name, ParserKind::typeTemplate);
        break;
    }
    return decl;
}

bool Parser::templateParameter(TemplateParameter& parameter) {
    parameter.range = peek().range();
    if (at(Keyword::classWord) ||
        (at(Keyword::typenameWord) && !peek(2).is(TokenKind::colonColon))) {
        advance();
        parameter.isPack = accept(TokenKind::ellipsis);
        if (atIdentifier()) {
            parameter.range = peek().range();
            parameter.name = advance().name;
            declare(parameter.name, ParserKind::type);
        }
        if (accept(TokenKind::equal)) {
            parameter.defaultType = typeName();
            return parameter.defaultType != nullptr;
        }
        return true;
    }
    Specifiers parts;
    Declarator name;
    if (!specifiers(parts) || !declarator(parts, name, true)) {
        return false;
    }
    parameter.valueType = name.type;
    parameter.isPack = name.isPack;
    if (name.name != nullptr) {
        parameter.name = name.name->name;
        parameter.range = name.range;
        declare(parameter.name, ParserKind::value);
    }
    if (accept(TokenKind::equal)) {
        parameter.defaultValue = binary(1);
        return parameter.defaultValue != nullptr;
    }
    return true;
}

// "template struct S<int>;" and "template float f<float>(float);"
Decl* Parser::instantiation() {
    const Token& first = peek();
    if (at(Keyword::structWord) || at(Keyword::classWord)) {
        advance();
        attributes();
        Decl* decl = makeDecl(DeclKind::instantiation, first.range());
        decl->type = typeName();
        return decl->type != nullptr && expect(TokenKind::semicolon, "after the instantiation")
                   ? decl
                   : nullptr;
    }
    Specifiers parts;
    Declarator name;
    if (!specifiers(parts) || !declarator(parts, name, false)) {
        return nullptr;
    }
    if (!at(TokenKind::leftParen)) {
        error(peek(), "an explicit instantiation names a struct or a function with its parameters");
        return nullptr;
    }
    Decl* decl = functionRest(parts, name);
    if (decl != nullptr) {
        decl->kind = DeclKind::instantiation;
    }
    return decl;
}

// Variables, functions, typedefs, structs and enums.
Decl* Parser::simpleDeclaration(bool member, std::span<TemplateParameter> templateParameters,
                                bool isTemplate) {
    const Token& first = peek();
    Specifiers parts;
    Declarator name;
    // A constructor has no type before its name.
    size_t lead = 0;
    while (peek(lead).is(Keyword::constexprWord) || peek(lead).is(Keyword::explicitWord) ||
           peek(lead).is(Keyword::inlineWord)) {
        ++lead;
    }
    const bool constructor = inStruct_ != nullptr && member &&
                             peek(lead).is(TokenKind::identifier) &&
                             peek(lead).name == inStruct_->name && inStruct_->name != nullptr &&
                             peek(lead + 1).is(TokenKind::leftParen);
    if (constructor) {
        for (; lead > 0; --lead) {
            parts.isExplicit = parts.isExplicit || peek().is(Keyword::explicitWord);
            advance();
        }
        name.range = peek().range();
        name.name = arena_.make<QualifiedName>();
        name.name->range = name.range;
        name.name->name = advance().name;
        parts.type = name.type = builtinSyntax(voidType(), name.range);
    } else {
        if (!specifiers(parts)) {
            return nullptr;
        }
        if (parts.defined != nullptr && accept(TokenKind::semicolon)) {
            parts.defined->templateParameters = templateParameters;
            parts.defined->isTemplate = isTemplate;
            return parts.defined;
        }
        if (parts.isConversion) {
            name.name = qualifiedName(false);
            if (name.name == nullptr) {
                return nullptr;
            }
            if (name.name->conversion == nullptr) {
                diagnostics_.error(name.name->range,
                                   "the type of the operator's result is missing before it");
                return nullptr;
            }
            name.range = name.name->range;
            name.type = name.name->conversion;
        } else if (!declarator(parts, name, false)) {
            return nullptr;
        }
    }
    if (at(TokenKind::leftParen) && (constructor || looksLikeParameters())) {
        Decl* decl = functionRest(parts, name);
        if (decl != nullptr) {
            decl->function->templateParameters = templateParameters;
            decl->function->isTemplate = isTemplate;
            decl->function->isConstructor = constructor;
            decl->function->isExplicit = parts.isExplicit;
            decl->typeDeclaration = parts.defined;
        }
        return decl;
    }
    if (parts.isTypedef) {
        Decl* decl = makeDecl(DeclKind::alias, name.range);
        decl->name = name.name->name;
        decl->type = name.type;
        decl->typeDeclaration = parts.defined;
        declare(decl->name, ParserKind::type);
        return expect(TokenKind::semicolon, "after the type") ? decl : nullptr;
    }
    Decl* decl = makeDecl(DeclKind::variables, rangeFrom(first));
    decl->typeDeclaration = parts.defined;
    decl->isTemplate = isTemplate;
    decl->templateParameters = templateParameters;
    std::vector<Variable*> list;
    while (true) {
        Variable* variable = variableRest(parts, name);
        if (variable == nullptr) {
            return nullptr;
        }
        list.push_back(variable);
        if (!accept(TokenKind::comma)) {
            break;
        }
        name = Declarator();
        if (!declarator(parts, name, false)) {
            return nullptr;
        }
    }
    decl->variables = arena_.copy(list);
    if (member && at(TokenKind::colon)) {
        error(peek(), "bit-fields are not supported; 'extract_bits' and 'insert_bits' take an "
                      "integer apart");
        return nullptr;
    }
    return expect(TokenKind::semicolon, "after the declaration") ? decl : nullptr;
}

// Tells "float f(float x)" from "float f(x)".
bool Parser::looksLikeParameters() const {
    if (peek(1).is(TokenKind::rightParen) || peek(1).is(TokenKind::ellipsis)) {
        return true;
    }
    if (peek(1).is(TokenKind::leftBracket)) {
        return true;
    }
    // Two names in a row: a type that is not known, which is reported as one.
    if (peek(1).is(TokenKind::identifier) && peek(1).name->keyword == Keyword::none &&
        peek(2).is(TokenKind::identifier)) {
        return true;
    }
    auto* self = const_cast<Parser*>(this);
    const size_t before = position_;
    ++self->position_;
    const bool type = startsDeclaration();
    self->position_ = before;
    return type;
}

Variable* Parser::variableRest(const Specifiers& parts, const Declarator& name) {
    auto* variable = arena_.make<Variable>();
    variable->range = name.range;
    variable->name = name.name != nullptr ? name.name->name : nullptr;
    variable->type = name.type;
    variable->isConstexpr = parts.isConstexpr;
    variable->isStatic = parts.isStatic;
    auto list = name.attributes;
    for (const auto& attribute : attributes()) {
        list.push_back(attribute);
    }
    list.insert(list.end(), parts.attributes.begin(), parts.attributes.end());
    variable->attributes = arena_.copy(list);
    // The name is visible in its own initialiser.
    declare(variable->name, ParserKind::value);
    if (accept(TokenKind::equal)) {
        variable->initKind = InitKind::equal;
        variable->init = initializer();
    } else if (at(TokenKind::leftBrace)) {
        variable->initKind = InitKind::brace;
        variable->init = initList();
    } else if (at(TokenKind::leftParen)) {
        variable->initKind = InitKind::paren;
        Expr* init = makeExpr(ExprKind::list, advance().range());
        std::vector<Expr*> items;
        if (!arguments(TokenKind::rightParen, items)) {
            return nullptr;
        }
        init->items = arena_.copy(items);
        variable->init = finish(init) ? init : nullptr;
    }
    if (variable->initKind != InitKind::none && variable->init == nullptr) {
        return nullptr;
    }
    return variable;
}

bool Parser::parameters(std::vector<Variable*>& list) {
    advance();
    if (at(Keyword::voidWord) && peek(1).is(TokenKind::rightParen)) {
        advance();
    }
    while (!at(TokenKind::rightParen)) {
        Specifiers parts;
        Declarator name;
        if (!specifiers(parts) || !declarator(parts, name, true)) {
            return false;
        }
        auto* parameter = arena_.make<Variable>();
        parameter->name = name.name != nullptr ? name.name->name : nullptr;
        parameter->range = name.name != nullptr ? name.range : parts.type->range;
        parameter->type = name.type;
        parameter->isPack = name.isPack;
        auto attributeList = name.attributes;
        for (const auto& attribute : attributes()) {
            attributeList.push_back(attribute);
        }
        attributeList.insert(attributeList.end(), parts.attributes.begin(), parts.attributes.end());
        parameter->attributes = arena_.copy(attributeList);
        declare(parameter->name, ParserKind::value);
        if (accept(TokenKind::equal)) {
            parameter->initKind = InitKind::equal;
            parameter->init = initializer();
            if (parameter->init == nullptr) {
                return false;
            }
        }
        list.push_back(parameter);
        if (!accept(TokenKind::comma)) {
            break;
        }
    }
    return expect(TokenKind::rightParen, "after the parameters");
}

Decl* Parser::functionRest(const Specifiers& parts, const Declarator& name) {
    Decl* decl = makeDecl(DeclKind::function, name.range);
    auto* function = arena_.make<Function>();
    decl->function = function;
    decl->name = function->name = name.name->name;
    function->qualifiedName = name.name;
    function->range = name.range;
    function->result = name.type;
    function->isStatic = parts.isStatic;
    function->stage = parts.stage;
    if (inTemplate_) {
        declare(function->name, ParserKind::functionTemplate);
        inTemplate_ = false;
    } else if (function->name->parserKind != ParserKind::functionTemplate &&
               (inStruct_ == nullptr || function->name != inStruct_->name)) {
        declare(function->name, ParserKind::value);
    }
    const size_t mark = openScope();
    std::vector<Variable*> list;
    if (!parameters(list)) {
        return nullptr;
    }
    function->parameters = arena_.copy(list);
    while (true) {
        if (accept(Keyword::constWord)) {
            function->isConst = true;
        } else if (const auto space = addressSpaceWord(); space != AddressSpace::none) {
            function->selfSpace = space;
            advance();
        } else if (at(Keyword::noexceptWord)) {
            advance();
        } else {
            break;
        }
    }
    auto attributeList = attributes();
    if (accept(TokenKind::arrow)) {
        if (function->result->kind != TypeSyntaxKind::automatic) {
            error(tokens_[position_ - 1], "a result's type behind the parameters needs 'auto' "
                                          "before the name");
            return nullptr;
        }
        function->result = typeName();
        function->trailingResult = true;
        if (function->result == nullptr) {
            return nullptr;
        }
    }
    attributeList.insert(attributeList.end(), parts.attributes.begin(), parts.attributes.end());
    for (const auto& attribute : attributeList) {
        if (attribute.name->keyword == Keyword::vertexWord) {
            function->stage = FunctionStage::vertex;
        } else if (attribute.name->keyword == Keyword::fragmentWord) {
            function->stage = FunctionStage::fragment;
        } else if (attribute.name->keyword == Keyword::kernelWord) {
            function->stage = FunctionStage::kernel;
        }
    }
    function->attributes = arena_.copy(attributeList);
    if (!functionBody(*function)) {
        return nullptr;
    }
    closeScope(mark);
    return decl;
}

// "member(value), Base<T>{value}" after a constructor's parameters.
bool Parser::memberInitializers(Function& function) {
    std::vector<Variable*> inits;
    do {
        auto* init = arena_.make<Variable>();
        const auto* name = qualifiedName(true);
        if (name == nullptr) {
            return false;
        }
        init->name = name->name;
        init->range = name->range;
        const bool brace = at(TokenKind::leftBrace);
        init->initKind = brace ? InitKind::brace : InitKind::paren;
        if (brace) {
            init->init = initList();
        } else {
            Expr* value = makeExpr(ExprKind::list, peek().range());
            std::vector<Expr*> items;
            if (!expect(TokenKind::leftParen, "after the member's name") ||
                !arguments(TokenKind::rightParen, items)) {
                return false;
            }
            value->items = arena_.copy(items);
            init->init = finish(value) ? value : nullptr;
        }
        if (init->init == nullptr) {
            return false;
        }
        inits.push_back(init);
    } while (accept(TokenKind::comma));
    function.memberInits = arena_.copy(inits);
    return true;
}

bool Parser::functionBody(Function& function) {
    if (accept(TokenKind::colon) && !memberInitializers(function)) {
        return false;
    }
    if (at(TokenKind::equal) && peek(1).is(Keyword::defaultWord)) {
        function.isDefaulted = true;
        advance();
        advance();
        return expect(TokenKind::semicolon, "after the defaulted function");
    }
    if (accept(TokenKind::semicolon)) {
        return true;
    }
    if (!at(TokenKind::leftBrace)) {
        return expect(TokenKind::semicolon, "or a body after the function's parameters");
    }
    Decl* outer = inStruct_;
    inStruct_ = nullptr;
    function.body = compound();
    inStruct_ = outer;
    return function.body != nullptr;
}

Decl* Parser::structDeclaration(bool& definition) {
    const Token& word = advance();
    attributes();
    const bool isTemplate = inTemplate_;
    inTemplate_ = false;
    Decl* decl = makeDecl(DeclKind::structure, word.range());
    decl->isUnion = word.is(Keyword::unionWord);
    if (atIdentifier()) {
        decl->range = peek().range();
        if (peek(1).is(TokenKind::colonColon)) {
            error(peek(1), "a struct is defined where it is declared");
            return nullptr;
        }
        decl->name = advance().name;
        if (isTemplate && at(TokenKind::less)) {
            std::vector<TemplateArgument> list;
            if (!templateArguments(list)) {
                return nullptr;
            }
            decl->isSpecialised = true;
            decl->arguments = arena_.copy(list);
        }
        declare(decl->name, isTemplate ? ParserKind::typeTemplate : ParserKind::type);
    }
    if (decl->name != nullptr && at(TokenKind::colon) && !baseStructs(*decl)) {
        return nullptr;
    }
    if (!at(TokenKind::leftBrace)) {
        return decl;
    }
    advance();
    definition = true;
    decl->isDefinition = true;
    Decl* outer = inStruct_;
    const bool outerDerived = derived_;
    inStruct_ = decl;
    derived_ = derived_ || !decl->bases.empty();
    // A member's name is a value only inside the struct's own functions, so a field may carry the
    // name of a type without hiding it from the rest of the source.
    const size_t mark = openScope();
    std::vector<Decl*> members;
    while (!at(TokenKind::rightBrace) && !at(TokenKind::endOfFile) && !diagnostics_.exhausted()) {
        if (accept(TokenKind::semicolon)) {
            continue;
        }
        if ((at(Keyword::publicWord) || at(Keyword::privateWord) || at(Keyword::protectedWord)) &&
            peek(1).is(TokenKind::colon)) {
            advance();
            advance();
            continue;
        }
        const size_t before = position_;
        if (Decl* member = declaration(true)) {
            members.push_back(member);
        } else {
            skipTo(true);
            if (position_ == before) {
                advance();
            }
        }
    }
    closeScope(mark);
    inStruct_ = outer;
    derived_ = outerDerived;
    decl->members = arena_.copy(members);
    return expect(TokenKind::rightBrace, "at the end of the struct") ? decl : nullptr;
}

// ": public A, B<T>"
bool Parser::baseStructs(Decl& decl) {
    advance();
    std::vector<TypeSyntax*> bases;
    do {
        while (at(Keyword::publicWord) || at(Keyword::privateWord) || at(Keyword::protectedWord)) {
            advance();
        }
        if (at(Keyword::virtualWord)) {
            error(peek(), "the language has no virtual functions and base structs");
            return false;
        }
        Specifiers base;
        if (!specifiers(base)) {
            return false;
        }
        bases.push_back(base.type);
    } while (accept(TokenKind::comma));
    decl.bases = arena_.copy(bases);
    return true;
}

Decl* Parser::enumDeclaration() {
    const Token& word = advance();
    Decl* decl = makeDecl(DeclKind::enumeration, word.range());
    decl->scoped = accept(Keyword::classWord) || accept(Keyword::structWord);
    attributes();
    if (atIdentifier()) {
        decl->range = peek().range();
        decl->name = advance().name;
        declare(decl->name, ParserKind::type);
    }
    if (accept(TokenKind::colon)) {
        Specifiers parts;
        if (!specifiers(parts)) {
            return nullptr;
        }
        decl->type = parts.type;
    }
    if (!at(TokenKind::leftBrace)) {
        return decl;
    }
    advance();
    decl->isDefinition = true;
    std::vector<Enumerator> list;
    while (!at(TokenKind::rightBrace)) {
        Enumerator enumerator;
        if (!expectName(enumerator.name, enumerator.range, "an enumerator")) {
            return nullptr;
        }
        attributes();
        if (accept(TokenKind::equal)) {
            enumerator.value = binary(1);
            if (enumerator.value == nullptr) {
                return nullptr;
            }
        }
        if (!decl->scoped) {
            declare(enumerator.name, ParserKind::value);
        }
        list.push_back(enumerator);
        if (!accept(TokenKind::comma)) {
            break;
        }
    }
    decl->enumerators = arena_.copy(list);
    return expect(TokenKind::rightBrace, "at the end of the enum") ? decl : nullptr;
}

} // namespace msl
