#include "library/app_state.h"

#include "library/identifiers.h"
#include "log/ls_log.h"
#include "platform/bundle.h"
#include "platform/platform.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace vantor {
namespace {

/// More than any state file holds: a source of 1 MiB on each of 16 displays.
constexpr std::size_t kMaxStateBytes = std::size_t{16} << 20;

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// The whole file, or the system's error number.
Result<Bytes, int> readFile(const std::filesystem::path& path) {
    std::error_code failure;
    // Whatever else stands there (a pipe, a device) could make the reader wait for ever.
    const auto status = std::filesystem::status(path, failure);
    if (failure) {
        return Failure{failure.value()};
    }
    if (std::filesystem::is_directory(status)) {
        return Failure{EISDIR};
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        return Failure{EINVAL};
    }
    errno = 0;
    const std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        return Failure{errno};
    }
    Bytes bytes;
    std::array<std::uint8_t, 65536> chunk;
    while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file.get())) {
        if (bytes.size() + count > kMaxStateBytes) {
            return Failure{EFBIG};
        }
        bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + count);
    }
    if (std::ferror(file.get()) != 0) {
        return Failure{errno};
    }
    return bytes;
}

} // namespace

std::filesystem::path realHome(Platform& platform) {
    if (auto home = platform.bundle().userDatabaseHome()) {
        return *std::move(home);
    }
    return platform.bundle().homeDirectory();
}

std::filesystem::path appStateURL(Platform& platform) {
    return realHome(platform) / "Library" / "Containers" / identifiers(platform).appBundleID /
           "Data" / "Library" / "Application Support" / "VantorEngine" / "LockScreen.plist";
}

std::optional<PropertyListDictionary> readAppState(Platform& platform,
                                                   const std::filesystem::path& file) {
    const auto bytes = readFile(file);
    if (!bytes) {
        LSLog::write("app state unreadable (" + std::to_string(bytes.error()) + ")");
        return std::nullopt;
    }
    auto root = platform.propertyLists().read(bytes.value());
    if (!root || root->dictionary() == nullptr) {
        return std::nullopt;
    }
    return std::move(*root->dictionary());
}

} // namespace vantor
