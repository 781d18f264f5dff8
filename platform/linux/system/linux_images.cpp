#include "platform/linux/system/linux_images.h"

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <jpeglib.h>
#include <memory>
#include <png.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace vantor {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// The lowest level with the SUB filter costs a ninth of libpng's default for pictures like these,
/// at the same size.
constexpr int kCompressionLevel = 1;

// libpng and libjpeg report failures by a long jump; objects with destructors live outside the
// functions that jump.

bool encodePNG(std::FILE* file, const BGRAPixels& pixels, std::uint8_t* row) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    if (info == nullptr) {
        png_destroy_write_struct(&png, nullptr);
        return false;
    }
    if (setjmp(png_jmpbuf(png)) != 0) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_init_io(png, file);
    png_set_compression_level(png, kCompressionLevel);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_IHDR(png, info, static_cast<png_uint_32>(pixels.width),
                 static_cast<png_uint_32>(pixels.height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        const std::uint8_t* in = pixels.bytes.data() + y * pixels.bytesPerRow;
        for (std::size_t x = 0; x < pixels.width; ++x) {
            row[x * 3] = in[x * 4 + 2];
            row[x * 3 + 1] = in[x * 4 + 1];
            row[x * 3 + 2] = in[x * 4];
        }
        png_write_row(png, row);
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

std::shared_ptr<const Image> decodePNG(std::FILE* file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_stdio(&image, file) == 0) {
        return nullptr;
    }
    if (image.width > kMaxImageSide || image.height > kMaxImageSide) {
        png_image_free(&image);
        return nullptr;
    }
    image.format = PNG_FORMAT_BGRA;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr) == 0) {
        return nullptr;
    }
    return std::make_shared<LinuxImage>(image.width, image.height, std::move(bytes));
}

struct JumpingErrors {
    jpeg_error_mgr manager;
    std::jmp_buf escape;
};

[[noreturn]] void escapeFromJPEG(j_common_ptr info) {
    std::longjmp(reinterpret_cast<JumpingErrors*>(info->err)->escape, 1);
}

/// False when the file is no readable JPEG; what `bytes` holds is then worthless.
bool decodeJPEG(std::FILE* file, std::size_t& width, std::size_t& height,
                std::vector<std::uint8_t>& bytes) {
    jpeg_decompress_struct info{};
    JumpingErrors errors{};
    info.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = escapeFromJPEG;
    errors.manager.emit_message = [](j_common_ptr, int) {};
    if (setjmp(errors.escape) != 0) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    if (info.image_width > kMaxImageSide || info.image_height > kMaxImageSide) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    info.out_color_space = JCS_EXT_BGRA;
    jpeg_start_decompress(&info);
    width = info.output_width;
    height = info.output_height;
    bytes.resize(width * height * 4);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = bytes.data() + std::size_t{info.output_scanline} * width * 4;
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return true;
}

} // namespace

bool LinuxImages::writePNG(const std::filesystem::path& file, const BGRAPixels& pixels) {
    if (pixels.width == 0 || pixels.height == 0 || pixels.width > PNG_UINT_31_MAX ||
        pixels.height > PNG_UINT_31_MAX) {
        return false;
    }
    std::string temporary = file.string() + ".XXXXXX";
    const int descriptor = mkstemp(temporary.data());
    if (descriptor < 0) {
        return false;
    }
    // Other processes of the user, the agent among them, read these files.
    fchmod(descriptor, S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
    File stream(fdopen(descriptor, "wb"));
    std::vector<std::uint8_t> row(pixels.width * 3);
    const bool whole = stream && encodePNG(stream.get(), pixels, row.data()) &&
                       std::fflush(stream.get()) == 0 && std::ferror(stream.get()) == 0 &&
                       std::rename(temporary.c_str(), file.c_str()) == 0;
    if (!whole) {
        unlink(temporary.c_str());
    }
    return whole;
}

std::shared_ptr<const Image> LinuxImages::read(const std::filesystem::path& file) {
    const File stream(std::fopen(file.c_str(), "rbe"));
    if (!stream) {
        return nullptr;
    }
    std::array<std::uint8_t, 8> head{};
    const std::size_t count = std::fread(head.data(), 1, head.size(), stream.get());
    std::rewind(stream.get());
    if (count == head.size() && png_sig_cmp(head.data(), 0, head.size()) == 0) {
        return decodePNG(stream.get());
    }
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint8_t> bytes;
    if (!decodeJPEG(stream.get(), width, height, bytes)) {
        return nullptr;
    }
    return std::make_shared<LinuxImage>(width, height, std::move(bytes));
}

} // namespace vantor
