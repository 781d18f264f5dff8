#include "bridge/file_url.h"

#include <string_view>

namespace vantor {
namespace {

// Foundation's published number for a URL that cannot be used.
constexpr const char* kErrorDomain = "NSCocoaErrorDomain";
constexpr int kCoderInvalidValue = 4866;

/// Path characters of RFC 3986 but ';', which older readers take for the start of parameters.
bool standsAsItIs(char c) {
    constexpr std::string_view kMarks = "-._~!$&'()*+,=:@/";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kMarks.find(c) != std::string_view::npos;
}

} // namespace

Result<std::string> FileURL::absoluteString() const {
    const std::string& bytes = path.native();
    if (!path.is_absolute() || bytes.find('\0') != std::string::npos) {
        return Failure{Error{.domain = kErrorDomain,
                             .code = kCoderInvalidValue,
                             .message = "the path \"" + bytes + "\" names no file by itself"}};
    }
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text = "file://";
    for (const char c : bytes) {
        if (standsAsItIs(c)) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return text;
}

} // namespace vantor
