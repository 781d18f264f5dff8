#include "library/thumbnails.h"

#include "library/desktop_state.h"
#include "render/shader_gpu.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantor {
namespace {

/// In pixels.
constexpr Size kSize{.width = 640, .height = 360};
/// Seconds into the animation.
constexpr float kMoment = 12.0F;
constexpr std::string_view kDesktopPrefix = "match-desktop-";

/// The shortest text that reads back as the same number.
std::string decimal(double value) {
    char digits[32];
    const auto [end, failure] = std::to_chars(std::begin(digits), std::end(digits), value);
    return {digits, end};
}

/// What the picture depends on, as text: the pipeline's key and the look, sorted by key.
std::string signature(const Resolved& resolved) {
    const PropertyListDictionary look = resolved.uniforms.lookPlist();
    std::vector<const PropertyListDictionary::Entry*> sorted;
    for (const PropertyListDictionary::Entry& entry : look) {
        sorted.push_back(&entry);
    }
    std::ranges::sort(sorted, {}, [](const auto* entry) { return std::string_view(entry->key); });
    std::string text = resolved.key + "[";
    for (const auto* entry : sorted) {
        text += "(" + entry->key + ", [";
        for (const PropertyList& component : *entry->value.array()) {
            text += decimal(*component.real()) + ", ";
        }
        text += "]), ";
    }
    return text + "]";
}

bool isThere(const std::filesystem::path& file) {
    std::error_code ignored;
    return std::filesystem::exists(file, ignored);
}

void removeDesktopThumbnails(const std::filesystem::path& folder) {
    std::error_code ignored;
    std::vector<std::filesystem::path> old;
    for (auto it = std::filesystem::directory_iterator(folder, ignored);
         it != std::filesystem::directory_iterator(); it.increment(ignored)) {
        if (it->path().filename().native().starts_with(kDesktopPrefix)) {
            old.push_back(it->path());
        }
    }
    for (const std::filesystem::path& file : old) {
        std::filesystem::remove(file, ignored);
    }
}

} // namespace

Thumbnails::Thumbnails(ShaderGPU& gpu, std::filesystem::path folder)
    : gpu_(gpu), folder_(std::move(folder)) {
    std::error_code ignored;
    std::filesystem::create_directories(folder_, ignored);
}

std::filesystem::path Thumbnails::ofEntry(const ShaderCatalog::Entry& entry) {
    auto file = folder_ / (std::string(entry.id) + ".png");
    if (entry.source && !isThere(file)) {
        render({.key = std::string(entry.id), .source = std::string(*entry.source)}, file);
    }
    return file;
}

std::filesystem::path Thumbnails::ofDesktop(const Resolved& resolved) {
    auto file = folder_ / (std::string(kDesktopPrefix) +
                           DesktopState::stableHash(signature(resolved)) + ".png");
    if (!isThere(file)) {
        removeDesktopThumbnails(folder_);
        render(resolved, file);
    }
    return file;
}

/// Asked before each render: a picture that cannot be kept would cost as much as one that can, at
/// every change of the desktop.
bool Thumbnails::takesFiles() const {
    std::error_code failure;
    std::filesystem::create_directories(folder_, failure);
    return std::filesystem::is_directory(folder_, failure) && access(folder_.c_str(), W_OK) == 0;
}

void Thumbnails::render(const Resolved& resolved, const std::filesystem::path& file) {
    if (takesFiles()) {
        gpu_.renderPNG(resolved.key, *resolved.source, resolved.uniforms, kSize, kMoment, file);
    }
}

} // namespace vantor
