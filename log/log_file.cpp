#include "log/log_file.h"

#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

namespace vantor {
namespace {

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, Closer>;

OpenFile open(const std::filesystem::path& path, const char* mode) {
    return OpenFile(std::fopen(path.c_str(), mode));
}

void write(const OpenFile& file, std::string_view bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
}

} // namespace

LogFile::LogFile(std::filesystem::path path) : path_(std::move(path)), rotatedPath_(path_) {
    rotatedPath_ += ".1";
    std::error_code ignored;
    std::filesystem::create_directories(path_.parent_path(), ignored);
}

void LogFile::append(std::string_view line) const {
    rotateIfLarge();
    if (const OpenFile existing = open(path_, "r+b")) {
        if (std::fseek(existing.get(), 0, SEEK_END) == 0) {
            write(existing, line);
        }
        return;
    }
    if (const OpenFile fresh = open(path_, "wb")) {
        write(fresh, line);
    }
}

void LogFile::rotateIfLarge() const {
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(path_, failure);
    if (failure || size <= kMaxBytes) {
        return;
    }
    std::filesystem::remove(rotatedPath_, failure);
    std::filesystem::rename(path_, rotatedPath_, failure);
}

} // namespace vantor
