// Draws one full-screen triangle with a module of ours on the machine's Vulkan device and reads the
// first pixel back: the oracle of the compiler's execution tests.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "msl/msl.h"

namespace vantor::tests {

class VulkanRunner {
  public:
    // The process's one runner; nothing where no Vulkan 1.3 device answers.
    static VulkanRunner* shared();
    ~VulkanRunner();
    VulkanRunner(const VulkanRunner&) = delete;
    VulkanRunner& operator=(const VulkanRunner&) = delete;

    // Draws v_main and f_main on 4 × 4 pixels of four floats each and gives the pixel at (0, 0).
    // `buffers` fill the fragment buffers in the order of the entry point's list. Every texture is
    // 4 × 4 with texel (x, y) = (x, y, x + 4y, 1). Nothing, and `problem`, where Vulkan refuses.
    std::optional<std::array<float, 4>> draw(const msl::Module& module,
                                             std::span<const std::vector<std::byte>> buffers,
                                             std::string& problem);

  private:
    struct Device;
    explicit VulkanRunner(std::unique_ptr<Device> device);
    std::unique_ptr<Device> device_;
};

} // namespace vantor::tests
