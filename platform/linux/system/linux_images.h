#pragma once
// Picture files on Linux, through libpng and libjpeg-turbo.

#include "platform/images.h"

#include <vector>

namespace vantor {

/// No picture file with a longer side is read.
inline constexpr std::size_t kMaxImageSide = 16384;

/// 8-bit BGRA, rows without padding, top row first.
class LinuxImage : public Image {
  public:
    LinuxImage(std::size_t width, std::size_t height, std::vector<std::uint8_t> bytes)
        : width_(width), height_(height), bytes_(std::move(bytes)) {}

    std::size_t width() const override { return width_; }
    std::size_t height() const override { return height_; }
    std::span<const std::uint8_t> bytes() const { return bytes_; }

  private:
    std::size_t width_;
    std::size_t height_;
    std::vector<std::uint8_t> bytes_;
};

class LinuxImages : public Images {
  public:
    bool writePNG(const std::filesystem::path& file, const BGRAPixels& pixels) override;
    /// Every image is a LinuxImage.
    std::shared_ptr<const Image> read(const std::filesystem::path& file) override;
};

} // namespace vantor
