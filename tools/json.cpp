#include "tools/json.h"

#include <array>
#include <charconv>
#include <cmath>

namespace vantor {
namespace {

std::string quoted(std::string_view text) {
    constexpr std::string_view kHexadecimal = "0123456789abcdef";
    std::string out = "\"";
    for (const char letter : text) {
        switch (letter) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(letter) < 0x20) {
                out += "\\u00";
                out += kHexadecimal[static_cast<unsigned char>(letter) >> 4U];
                out += kHexadecimal[static_cast<unsigned char>(letter) & 15U];
            } else {
                out += letter;
            }
        }
    }
    return out + '"';
}

/// The shortest text that reads back as the same number.
std::string number(double value) {
    if (!std::isfinite(value)) {
        return "null";
    }
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.begin(), text.end(), value).ptr;
    return {text.begin(), end};
}

class Writer {
  public:
    std::string text;

    void write(const PropertyList& value) {
        if (const auto* dictionary = value.dictionary()) {
            writeDictionary(*dictionary);
        } else if (const auto* array = value.array()) {
            writeArray(*array);
        } else {
            text += scalar(value);
        }
    }

  private:
    static std::string scalar(const PropertyList& value) {
        if (const auto* string = value.string()) {
            return quoted(*string);
        }
        if (const auto* boolean = value.boolean()) {
            return *boolean ? "true" : "false";
        }
        if (const auto* integer = value.integer()) {
            return std::to_string(*integer);
        }
        if (const auto* large = value.unsignedInteger()) {
            return std::to_string(*large);
        }
        if (const auto* data = value.data()) {
            return std::to_string(data->size());
        }
        if (const auto* uid = value.uid()) {
            return std::to_string(uid->index);
        }
        return number(value.date() != nullptr ? value.date()->seconds : *value.real());
    }

    void writeDictionary(const PropertyListDictionary& dictionary) {
        open('{');
        bool first = true;
        for (const auto& [key, value] : dictionary) {
            next(first);
            text += quoted(key) + ": ";
            write(value);
        }
        close('}', dictionary.empty());
    }

    void writeArray(const PropertyList::Array& array) {
        open('[');
        bool first = true;
        for (const PropertyList& element : array) {
            next(first);
            write(element);
        }
        close(']', array.empty());
    }

    void open(char bracket) {
        text += bracket;
        ++depth_;
    }

    void next(bool& first) {
        if (!first) {
            text += ',';
        }
        first = false;
        newLine();
    }

    void close(char bracket, bool empty) {
        --depth_;
        if (!empty) {
            newLine();
        }
        text += bracket;
    }

    void newLine() { text += '\n' + std::string(depth_ * 2, ' '); }

    std::size_t depth_ = 0;
};

} // namespace

std::string toJSON(const PropertyList& value) {
    Writer writer;
    writer.write(value);
    return writer.text + '\n';
}

} // namespace vantor
