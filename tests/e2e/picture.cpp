#include "tests/e2e/picture.h"

#include <algorithm>
#include <cstdlib>
#include <png.h>
#include <stdexcept>

namespace vantor::e2e {

Picture Picture::read(const std::filesystem::path& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, file.c_str()) == 0) {
        throw std::runtime_error(file.string() + ": " + image.message);
    }
    image.format = PNG_FORMAT_RGB;
    Picture picture;
    picture.width_ = image.width;
    picture.height_ = image.height;
    picture.rgb_.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.rgb_.data(), 0, nullptr) == 0) {
        throw std::runtime_error(file.string() + ": " + image.message);
    }
    return picture;
}

Pixel Picture::at(unsigned x, unsigned y) const {
    const std::size_t at = (std::size_t{y} * width_ + x) * 3;
    return {.red = rgb_.at(at), .green = rgb_.at(at + 1), .blue = rgb_.at(at + 2)};
}

int Picture::brightest() const { return *std::max_element(rgb_.begin(), rgb_.end()); }

double Picture::difference(const Picture& other) const {
    if (width_ != other.width_ || height_ != other.height_) {
        throw std::runtime_error("pictures of different sizes are compared");
    }
    double sum = 0;
    for (std::size_t i = 0; i < rgb_.size(); ++i) {
        sum += std::abs(int{rgb_[i]} - int{other.rgb_[i]});
    }
    return sum / static_cast<double>(rgb_.size());
}

} // namespace vantor::e2e
