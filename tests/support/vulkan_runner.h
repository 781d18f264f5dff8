// Draws one full-screen triangle with a module of ours on the machine's Vulkan device and reads the
// first pixel back: the oracle of the compiler's execution tests.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "msl/msl.h"

namespace vantor::tests {

class VulkanTestDevice;

class VulkanRunner {
  public:
    // The process's one runner; nothing where no Vulkan 1.3 device answers.
    static VulkanRunner* shared();
    ~VulkanRunner();
    VulkanRunner(const VulkanRunner&) = delete;
    VulkanRunner& operator=(const VulkanRunner&) = delete;

    struct Extras {
        std::vector<std::byte> argumentBuffer; // what each buffer inside an argument buffer holds
        std::vector<std::pair<uint32_t, uint32_t>> constants; // specialisation ids and their bits
    };

    using Pixel = std::array<float, 4>;

    // One function of a module. `entry` describes a fragment function's resources.
    struct StageCode {
        std::span<const uint32_t> words;
        std::string name;
        msl::EntryPoint entry{};
    };

    // Draws on 4 × 4 pixels of four floats each and gives them row by row. `buffers` fill the
    // fragment buffers in the order of the entry point's list; textures are filled as
    // VulkanTestDevice::makeTexture says. Nothing, and `problem`, where Vulkan refuses.
    std::optional<std::vector<Pixel>> drawAll(const StageCode& vertex, const StageCode& fragment,
                                              std::span<const std::vector<std::byte>> buffers,
                                              std::string& problem, const Extras& extras);

    // The pixel at (0, 0) that v_main and f_main draw.
    std::optional<Pixel> draw(const msl::Module& module,
                              std::span<const std::vector<std::byte>> buffers, std::string& problem,
                              const Extras& extras);
    std::optional<Pixel> draw(const msl::Module& module,
                              std::span<const std::vector<std::byte>> buffers,
                              std::string& problem) {
        return draw(module, buffers, problem, {});
    }

  private:
    explicit VulkanRunner(std::unique_ptr<VulkanTestDevice> device);
    std::unique_ptr<VulkanTestDevice> device_;
};

} // namespace vantor::tests
