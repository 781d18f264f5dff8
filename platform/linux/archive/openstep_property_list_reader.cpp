#include "platform/linux/archive/openstep_property_list_reader.h"

#include "platform/linux/archive/archive_error.h"
#include "platform/linux/archive/expansion_budget.h"
#include "platform/linux/archive/unicode.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>

namespace vantor::archive {
namespace {

/// The upper half of the NeXTSTEP encoding, which octal escapes are in.
/// Source: unicode.org, VENDORS/NEXT/NEXTSTEP.TXT.
constexpr std::array<char16_t, 128> kNeXTSTEPUpperHalf{
    0x00a0, 0x00c0, 0x00c1, 0x00c2, 0x00c3, 0x00c4, 0x00c5, 0x00c7, 0x00c8, 0x00c9, 0x00ca, 0x00cb,
    0x00cc, 0x00cd, 0x00ce, 0x00cf, 0x00d0, 0x00d1, 0x00d2, 0x00d3, 0x00d4, 0x00d5, 0x00d6, 0x00d9,
    0x00da, 0x00db, 0x00dc, 0x00dd, 0x00de, 0x00b5, 0x00d7, 0x00f7, 0x00a9, 0x00a1, 0x00a2, 0x00a3,
    0x2044, 0x00a5, 0x0192, 0x00a7, 0x00a4, 0x2019, 0x201c, 0x00ab, 0x2039, 0x203a, 0xfb01, 0xfb02,
    0x00ae, 0x2013, 0x2020, 0x2021, 0x00b7, 0x00a6, 0x00b6, 0x2022, 0x201a, 0x201e, 0x201d, 0x00bb,
    0x2026, 0x2030, 0x00ac, 0x00bf, 0x00b9, 0x02cb, 0x00b4, 0x02c6, 0x02dc, 0x00af, 0x02d8, 0x02d9,
    0x00a8, 0x00b2, 0x02da, 0x00b8, 0x00b3, 0x02dd, 0x02db, 0x02c7, 0x2014, 0x00b1, 0x00bc, 0x00bd,
    0x00be, 0x00e0, 0x00e1, 0x00e2, 0x00e3, 0x00e4, 0x00e5, 0x00e7, 0x00e8, 0x00e9, 0x00ea, 0x00eb,
    0x00ec, 0x00c6, 0x00ed, 0x00aa, 0x00ee, 0x00ef, 0x00f0, 0x00f1, 0x0141, 0x00d8, 0x0152, 0x00ba,
    0x00f2, 0x00f3, 0x00f4, 0x00f5, 0x00f6, 0x00e6, 0x00f9, 0x00fa, 0x00fb, 0x0131, 0x00fc, 0x00fd,
    0x0142, 0x00f8, 0x0153, 0x00df, 0x00fe, 0x00ff, 0xfffd, 0xfffd};

bool isPlainCharacter(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z') ||
           std::string_view("_$/:.-").find(character) != std::string_view::npos;
}

int hexDigit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'a' && character <= 'f') {
        return character - 'a' + 10;
    }
    return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

class Reader {
  public:
    explicit Reader(std::string_view text) : text_(text), rest_(text) {}

    Result<PropertyList> read() {
        PropertyList root;
        if (!isUTF8(text_)) {
            fail("is no UTF-8 text");
        } else if (readRoot(root)) {
            skipBlanks();
            if (!rest_.empty()) {
                fail("has text after its value");
            }
        }
        if (!error_.empty()) {
            return Failure{cocoaError(kPropertyListReadCorrupt, "text property list " + error_)};
        }
        return root;
    }

  private:
    bool fail(const std::string& why) {
        if (error_.empty()) {
            const auto taken = text_.substr(0, text_.size() - rest_.size());
            error_ = why + " at line " +
                     std::to_string(1 + std::count(taken.begin(), taken.end(), '\n'));
        }
        return false;
    }

    /// Blanks and comments. An unclosed comment reaches to the end.
    void skipBlanks() {
        while (!rest_.empty()) {
            if (std::string_view(" \t\r\n\f\v").find(rest_[0]) != std::string_view::npos) {
                rest_.remove_prefix(1);
            } else if (rest_.starts_with("//")) {
                rest_.remove_prefix(std::min(rest_.find('\n'), rest_.size()));
            } else if (rest_.starts_with("/*")) {
                const std::size_t end = rest_.find("*/", 2);
                rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 2);
            } else {
                return;
            }
        }
    }

    /// Takes `character` if it comes next.
    bool take(char character) {
        skipBlanks();
        if (!rest_.starts_with(character)) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    bool readRoot(PropertyList& out) {
        skipBlanks();
        if (rest_.empty()) {
            return fail("holds no value");
        }
        const std::string_view start = rest_;
        if (!readValue(0, out)) {
            return false;
        }
        skipBlanks();
        if (out.string() == nullptr || (!rest_.starts_with('=') && !rest_.starts_with(';'))) {
            return true;
        }
        rest_ = start;
        return readEntries(0, out) && (rest_.empty() || fail("has text after its entries"));
    }

    bool readValue(std::size_t depth, PropertyList& out) {
        if (!budget_.take(1, 0)) {
            return fail(ExpansionBudget::exceeded());
        }
        skipBlanks();
        if (rest_.starts_with('{') || rest_.starts_with('(')) {
            if (depth >= kMaxDepth) {
                return fail("nests deeper than the limit of " + std::to_string(kMaxDepth));
            }
            if (take('(')) {
                return readArray(depth + 1, out);
            }
            rest_.remove_prefix(1);
            return readEntries(depth + 1, out) && (take('}') || fail("lacks a closing brace"));
        }
        if (take('<')) {
            return readData(out);
        }
        std::string text;
        if (!readString(text)) {
            return false;
        }
        out = PropertyList(std::move(text));
        return true;
    }

    bool readArray(std::size_t depth, PropertyList& out) {
        PropertyList::Array array;
        while (!take(')')) {
            PropertyList element;
            if (!readValue(depth, element)) {
                return false;
            }
            array.push_back(std::move(element));
            if (!take(',')) {
                if (!take(')')) {
                    return fail("lacks a comma or a closing parenthesis");
                }
                break;
            }
        }
        out = PropertyList(std::move(array));
        return true;
    }

    /// Up to the closing brace or the end. An entry without a value is its own value.
    bool readEntries(std::size_t depth, PropertyList& out) {
        PropertyListDictionary dictionary;
        for (skipBlanks(); !rest_.empty() && !rest_.starts_with('}'); skipBlanks()) {
            std::string key;
            if (!budget_.take(1, 0)) {
                return fail(ExpansionBudget::exceeded());
            }
            if (!readString(key)) {
                return false;
            }
            PropertyList value(key);
            if (take('=') && !readValue(depth, value)) {
                return false;
            }
            if (!take(';')) {
                return fail("lacks a semicolon");
            }
            dictionary.append(std::move(key), std::move(value));
        }
        out = PropertyList(std::move(dictionary));
        return true;
    }

    bool readData(PropertyList& out) {
        Bytes bytes;
        int high = -1;
        for (skipBlanks(); !rest_.empty() && rest_[0] != '>'; skipBlanks()) {
            const int digit = hexDigit(rest_[0]);
            if (digit < 0) {
                return fail("has a character in its data that is no hexadecimal digit");
            }
            rest_.remove_prefix(1);
            if (high < 0) {
                high = digit;
            } else {
                bytes.push_back(static_cast<std::uint8_t>(high * 16 + digit));
                high = -1;
            }
        }
        if (high >= 0 || !take('>')) {
            return fail("has data of half a byte or without an end");
        }
        if (!budget_.take(0, bytes.size())) {
            return fail(ExpansionBudget::exceeded());
        }
        out = PropertyList(std::move(bytes));
        return true;
    }

    bool readString(std::string& out) {
        skipBlanks();
        if (rest_.starts_with('"') || rest_.starts_with('\'')) {
            return readQuoted(out);
        }
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isPlainCharacter);
        const auto length = static_cast<std::size_t>(end - rest_.begin());
        if (length == 0) {
            return fail(rest_.empty() ? "ends where a value belongs"
                                      : "has a character where a value belongs");
        }
        if (!budget_.take(0, length)) {
            return fail(ExpansionBudget::exceeded());
        }
        out.assign(rest_.substr(0, length));
        rest_.remove_prefix(length);
        return true;
    }

    bool readQuoted(std::string& out) {
        const char quote = rest_[0];
        rest_.remove_prefix(1);
        const std::size_t before = rest_.size();
        while (!rest_.empty() && rest_[0] != quote) {
            if (rest_[0] == '\\') {
                rest_.remove_prefix(1);
                readEscape(out);
            } else {
                out.push_back(rest_[0]);
                rest_.remove_prefix(1);
            }
        }
        if (rest_.empty()) {
            return fail("has text without a closing quote");
        }
        rest_.remove_prefix(1);
        return budget_.take(0, before - rest_.size()) || fail(ExpansionBudget::exceeded());
    }

    /// Takes up to `most` digits of `base`.
    char32_t takeDigits(int base, int most) {
        char32_t value = 0;
        for (; most > 0 && !rest_.empty(); --most) {
            const int digit = hexDigit(rest_[0]);
            if (digit < 0 || digit >= base) {
                break;
            }
            value = value * static_cast<char32_t>(base) + static_cast<char32_t>(digit);
            rest_.remove_prefix(1);
        }
        return value;
    }

    void readEscape(std::string& out) {
        if (rest_.empty()) {
            return;
        }
        const char kind = rest_[0];
        if (kind >= '0' && kind <= '7') {
            const char32_t byte = takeDigits(8, 3) & 0xff;
            appendUTF8(out, byte < 0x80 ? byte : char32_t{kNeXTSTEPUpperHalf[byte - 0x80]});
            return;
        }
        rest_.remove_prefix(1);
        if (kind == 'U' || kind == 'u') {
            char32_t character = takeDigits(16, 4);
            const std::string_view afterHigh = rest_;
            if (character >= 0xd800 && character < 0xdc00 &&
                (rest_.starts_with("\\U") || rest_.starts_with("\\u"))) {
                rest_.remove_prefix(2);
                const char32_t low = takeDigits(16, 4);
                if (low >= 0xdc00 && low < 0xe000) {
                    character = 0x10000 + ((character - 0xd800) << 10) + (low - 0xdc00);
                } else {
                    rest_ = afterHigh;
                }
            }
            appendUTF8(out, character);
            return;
        }
        constexpr std::string_view kNames = "abfnrtv";
        constexpr std::string_view kCharacters = "\a\b\f\n\r\t\v";
        const std::size_t known = kNames.find(kind);
        out.push_back(known == std::string_view::npos ? kind : kCharacters[known]);
    }

    std::string_view text_;
    std::string_view rest_;
    ExpansionBudget budget_;
    std::string error_;
};

} // namespace

Result<PropertyList> readOpenStepPropertyList(std::span<const std::uint8_t> bytes) {
    return Reader({reinterpret_cast<const char*>(bytes.data()), bytes.size()}).read();
}

} // namespace vantor::archive
