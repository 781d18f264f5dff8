#include "msl/lexer/name.h"

#include <array>

namespace msl {
namespace {

struct KeywordText {
    std::string_view text;
    Keyword keyword;
};

constexpr KeywordText kKeywords[] = {
    {"alignas", Keyword::alignasWord},
    {"alignof", Keyword::alignofWord},
    {"as_type", Keyword::asType},
    {"auto", Keyword::autoWord},
    {"bool", Keyword::boolWord},
    {"break", Keyword::breakWord},
    {"case", Keyword::caseWord},
    {"char", Keyword::charWord},
    {"class", Keyword::classWord},
    {"const", Keyword::constWord},
    {"constant", Keyword::constantWord},
    {"constexpr", Keyword::constexprWord},
    {"consteval", Keyword::constevalWord},
    {"continue", Keyword::continueWord},
    {"decltype", Keyword::decltypeWord},
    {"default", Keyword::defaultWord},
    {"delete", Keyword::deleteWord},
    {"device", Keyword::deviceWord},
    {"do", Keyword::doWord},
    {"else", Keyword::elseWord},
    {"enum", Keyword::enumWord},
    {"explicit", Keyword::explicitWord},
    {"extern", Keyword::externWord},
    {"false", Keyword::falseWord},
    {"float", Keyword::floatWord},
    {"for", Keyword::forWord},
    {"fragment", Keyword::fragmentWord},
    {"friend", Keyword::friendWord},
    {"goto", Keyword::gotoWord},
    {"half", Keyword::halfWord},
    {"if", Keyword::ifWord},
    {"inline", Keyword::inlineWord},
    {"int", Keyword::intWord},
    {"kernel", Keyword::kernelWord},
    {"long", Keyword::longWord},
    {"namespace", Keyword::namespaceWord},
    {"nullptr", Keyword::nullptrWord},
    {"operator", Keyword::operatorWord},
    {"private", Keyword::privateWord},
    {"protected", Keyword::protectedWord},
    {"public", Keyword::publicWord},
    {"return", Keyword::returnWord},
    {"short", Keyword::shortWord},
    {"signed", Keyword::signedWord},
    {"sizeof", Keyword::sizeofWord},
    {"static", Keyword::staticWord},
    {"static_assert", Keyword::staticAssertWord},
    {"static_cast", Keyword::staticCastWord},
    {"struct", Keyword::structWord},
    {"switch", Keyword::switchWord},
    {"template", Keyword::templateWord},
    {"this", Keyword::thisWord},
    {"thread", Keyword::threadWord},
    {"threadgroup", Keyword::threadgroupWord},
    {"true", Keyword::trueWord},
    {"typedef", Keyword::typedefWord},
    {"typename", Keyword::typenameWord},
    {"union", Keyword::unionWord},
    {"unsigned", Keyword::unsignedWord},
    {"using", Keyword::usingWord},
    {"vertex", Keyword::vertexWord},
    {"virtual", Keyword::virtualWord},
    {"void", Keyword::voidWord},
    {"volatile", Keyword::volatileWord},
    {"while", Keyword::whileWord},
    {"reinterpret_cast", Keyword::reinterpretCastWord},
    {"const_cast", Keyword::constCastWord},
    {"double", Keyword::doubleWord},
    {"noexcept", Keyword::noexceptWord},
    {"register", Keyword::registerWord},
    {"mutable", Keyword::mutableWord},
    {"__attribute__", Keyword::attributeWord},
    {"and", Keyword::andWord},
    {"and_eq", Keyword::andEqualWord},
    {"bitand", Keyword::bitandWord},
    {"bitor", Keyword::bitorWord},
    {"compl", Keyword::complWord},
    {"not", Keyword::notWord},
    {"not_eq", Keyword::notEqualWord},
    {"or", Keyword::orWord},
    {"or_eq", Keyword::orEqualWord},
    {"xor", Keyword::xorWord},
    {"xor_eq", Keyword::xorEqualWord},
};

constexpr size_t kKeywordSlots = 256;

constexpr auto kKeywordTable = [] {
    std::array<uint8_t, kKeywordSlots> table{}; // index into kKeywords plus one
    for (size_t i = 0; i < std::size(kKeywords); ++i) {
        size_t slot = nameHash(kKeywords[i].text) % kKeywordSlots;
        while (table[slot] != 0) {
            slot = (slot + 1) % kKeywordSlots;
        }
        table[slot] = static_cast<uint8_t>(i + 1);
    }
    return table;
}();

Keyword keywordOf(std::string_view text, uint32_t hash) {
    for (size_t slot = hash % kKeywordSlots; kKeywordTable[slot] != 0;
         slot = (slot + 1) % kKeywordSlots) {
        const auto& candidate = kKeywords[kKeywordTable[slot] - 1];
        if (candidate.text == text) {
            return candidate.keyword;
        }
    }
    return Keyword::none;
}

} // namespace

NameTable::NameTable(Arena& arena) : arena_(arena), slots_(1024) { names_.reserve(512); }

Name NameTable::intern(std::string_view text, uint32_t hash) {
    size_t slot = hash & (slots_.size() - 1);
    while (slots_[slot] != nullptr) {
        if (slots_[slot]->hash == hash && slots_[slot]->text == text) {
            return slots_[slot];
        }
        slot = (slot + 1) & (slots_.size() - 1);
    }
    auto* entry = arena_.make<NameEntry>();
    entry->text = arena_.copy(text);
    entry->hash = hash;
    entry->keyword = keywordOf(text, hash);
    slots_[slot] = entry;
    names_.push_back(entry);
    if (names_.size() * 2 > slots_.size()) {
        grow();
    }
    return entry;
}

bool NameTable::contains(std::string_view text) const {
    const uint32_t hash = nameHash(text);
    for (size_t slot = hash & (slots_.size() - 1); slots_[slot] != nullptr;
         slot = (slot + 1) & (slots_.size() - 1)) {
        if (slots_[slot]->hash == hash && slots_[slot]->text == text) {
            return true;
        }
    }
    return false;
}

void NameTable::grow() {
    std::vector<Name> larger(slots_.size() * 2);
    for (const auto name : names_) {
        size_t slot = name->hash & (larger.size() - 1);
        while (larger[slot] != nullptr) {
            slot = (slot + 1) & (larger.size() - 1);
        }
        larger[slot] = name;
    }
    slots_ = std::move(larger);
}

} // namespace msl
