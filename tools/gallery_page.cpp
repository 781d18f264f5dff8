#include "tools/gallery_page.h"

#include "tools/gallery_templates.h"

#include <initializer_list>
#include <sstream>
#include <utility>

namespace vantor {
namespace {

std::string escaped(std::string_view text) {
    std::string out;
    for (const char letter : text) {
        switch (letter) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += letter;
        }
    }
    return out;
}

/// The template with each "{{name}}" replaced by its value.
std::string filled(std::string_view text,
                   std::initializer_list<std::pair<std::string_view, std::string_view>> values) {
    std::string out;
    for (std::size_t open = text.find("{{"); open != std::string_view::npos;
         open = text.find("{{")) {
        const std::size_t close = text.find("}}", open);
        const std::string_view name = text.substr(open + 2, close - open - 2);
        out += text.substr(0, open);
        for (const auto& [key, value] : values) {
            if (key == name) {
                out += value;
            }
        }
        text.remove_prefix(close + 2);
    }
    return out += text;
}

std::string shortNumber(float value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

} // namespace

std::string base64(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            group = group << 8U | (j < count ? bytes[i + j] : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            text += j <= count ? kDigits[group >> (18U - 6U * j) & 63U] : '=';
        }
    }
    return text;
}

std::string galleryPage(std::span<const GalleryPicture> pictures, unsigned width, unsigned height,
                        float time) {
    std::string cards;
    for (const GalleryPicture& picture : pictures) {
        cards += filled(templates::gallery_card, {{"title", escaped(picture.title)},
                                                  {"id", escaped(picture.id)},
                                                  {"picture", base64(picture.png)},
                                                  {"width", std::to_string(width)},
                                                  {"height", std::to_string(height)}});
    }
    return filled(templates::gallery, {{"cards", cards},
                                       {"count", std::to_string(pictures.size())},
                                       {"time", shortNumber(time)},
                                       {"version", VANTOR_VERSION}});
}

} // namespace vantor
