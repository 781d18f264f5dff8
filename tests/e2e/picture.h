#pragma once
// A PNG file as a test looks at it, read through libpng and nothing of the project's.

#include <cstdint>
#include <filesystem>
#include <vector>

namespace vantor::e2e {

struct Pixel {
    int red = 0;
    int green = 0;
    int blue = 0;
};

class Picture {
  public:
    /// Throws when the file is no readable PNG, which fails the test that asked.
    static Picture read(const std::filesystem::path& file);

    unsigned width() const { return width_; }
    unsigned height() const { return height_; }
    Pixel at(unsigned x, unsigned y) const;
    /// The largest component of any pixel.
    int brightest() const;
    /// The mean absolute difference per component, in steps of 255. Same sizes only.
    double difference(const Picture& other) const;

  private:
    unsigned width_ = 0;
    unsigned height_ = 0;
    std::vector<std::uint8_t> rgb_;
};

} // namespace vantor::e2e
