#pragma once
// Picture files.
//   Linux: libpng, libjpeg-turbo.
//   macOS: Core Graphics and ImageIO.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace vantor {

/// A decoded picture; immutable, shared.
class Image {
  public:
    virtual ~Image() = default;
    /// In pixels.
    virtual std::size_t width() const = 0;
    virtual std::size_t height() const = 0;
};

/// 8-bit BGRA rows, top row first; the alpha byte is ignored (every pixel is opaque).
struct BGRAPixels {
    std::span<const std::uint8_t> bytes;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bytesPerRow = 0;
};

/// Any thread.
class Images {
  public:
    virtual ~Images() = default;

    /// Writes a PNG file, replacing what is there in one step: no reader sees half a file. False
    /// when it could not be written; the old file then stands. No directory is created.
    virtual bool writePNG(const std::filesystem::path& file, const BGRAPixels& pixels) = 0;

    /// Reads the first image of a PNG or JPEG file; null when it cannot be decoded.
    virtual std::shared_ptr<const Image> read(const std::filesystem::path& file) = 0;
};

} // namespace vantor
