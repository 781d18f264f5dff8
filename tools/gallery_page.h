#pragma once
// The gallery: one page that needs nothing beside itself, with its pictures in it.

#include "platform/property_list.h"

#include <span>
#include <string>
#include <string_view>

namespace vantor {

struct GalleryPicture {
    std::string_view id;
    std::string_view title;
    /// A PNG file's content.
    Bytes png;
};

/// The page as HTML, the pictures in the order given. `width` and `height` are the pictures' in
/// pixels, `time` the moment that they show in seconds.
std::string galleryPage(std::span<const GalleryPicture> pictures, unsigned width, unsigned height,
                        float time);

/// RFC 4648's base 64, with padding.
std::string base64(std::span<const std::uint8_t> bytes);

} // namespace vantor
