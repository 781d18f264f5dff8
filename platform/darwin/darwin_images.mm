#include "platform/darwin/darwin_system.h"

#include "platform/darwin/foundation.h"

#import <ImageIO/ImageIO.h>
#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

#include <memory>
#include <system_error>
#include <type_traits>

namespace vantor::darwin {
namespace {

struct Releaser {
    void operator()(const void* object) const { CFRelease(object); }
};
/// Owns what a function with "Create" in its name gave.
template <typename Ref>
using Created = std::unique_ptr<std::remove_pointer_t<Ref>, Releaser>;

/// BGRA bytes with the alpha byte ignored.
constexpr auto kBitmapInfo =
    static_cast<CGBitmapInfo>(static_cast<std::uint32_t>(kCGBitmapByteOrder32Little) |
                              static_cast<std::uint32_t>(kCGImageAlphaNoneSkipFirst));
static_assert(static_cast<std::uint32_t>(kBitmapInfo) == 0x2006);

constexpr std::size_t kBitsPerComponent = 8;
constexpr std::size_t kBitsPerPixel = 32;

/// CGImage.
class DarwinImage : public Image, public NativeHolder {
  public:
    explicit DarwinImage(Created<CGImageRef> image)
        : native_(image.get()), image_(std::move(image)) {}

    const NativeRef& native() const override { return native_; }
    std::size_t width() const override { return CGImageGetWidth(image_.get()); }
    std::size_t height() const override { return CGImageGetHeight(image_.get()); }

  private:
    NativeRef native_;
    Created<CGImageRef> image_;
};

Created<CGImageRef> imageOf(const BGRAPixels& pixels) {
    const Created<CGDataProviderRef> provider(
        CGDataProviderCreateWithCFData((__bridge CFDataRef)nsData(pixels.bytes)));
    const Created<CGColorSpaceRef> space(CGColorSpaceCreateDeviceRGB());
    if (!provider || !space) {
        return nullptr;
    }
    return Created<CGImageRef>(CGImageCreate(
        pixels.width, pixels.height, kBitsPerComponent, kBitsPerPixel, pixels.bytesPerRow,
        space.get(), kBitmapInfo, provider.get(), nullptr, true, kCGRenderingIntentDefault));
}

bool writeImage(const std::filesystem::path& file, CGImageRef image) {
    const Created<CGImageDestinationRef> destination(CGImageDestinationCreateWithURL(
        (__bridge CFURLRef)fileURL(file), (__bridge CFStringRef)UTTypePNG.identifier, 1, nullptr));
    if (!destination) {
        return false;
    }
    CGImageDestinationAddImage(destination.get(), image, nullptr);
    return CGImageDestinationFinalize(destination.get());
}

} // namespace

bool DarwinImages::writePNG(const std::filesystem::path& file, const BGRAPixels& pixels) {
    const Created<CGImageRef> image = imageOf(pixels);
    if (!image) {
        return false;
    }
    // Under another name until it is whole; readers see the old file or the new one.
    std::filesystem::path temporary = file;
    temporary += ".partial";
    std::error_code failed;
    if (writeImage(temporary, image.get())) {
        std::filesystem::rename(temporary, file, failed);
        if (!failed) {
            return true;
        }
    }
    std::filesystem::remove(temporary, failed);
    return false;
}

std::shared_ptr<const Image> DarwinImages::read(const std::filesystem::path& file) {
    const Created<CGImageSourceRef> source(
        CGImageSourceCreateWithURL((__bridge CFURLRef)fileURL(file), nullptr));
    if (!source) {
        return nullptr;
    }
    Created<CGImageRef> image(CGImageSourceCreateImageAtIndex(source.get(), 0, nullptr));
    return image ? std::make_shared<DarwinImage>(std::move(image)) : nullptr;
}

} // namespace vantor::darwin
