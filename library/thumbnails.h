#pragma once
// The picker's pictures: PNG files in one folder, each rendered once and then kept.

#include "render/resolved.h"
#include "shaders/shader_catalog.h"

#include <filesystem>
#include <optional>

namespace vantor {

class ShaderGPU;

/// Main thread only.
class Thumbnails {
  public:
    /// Makes the folder where it can. `gpu` must outlive this.
    Thumbnails(ShaderGPU& gpu, std::filesystem::path folder);

    const std::filesystem::path& folder() const { return folder_; }

    /// The file of a catalog entry, named by its identifier. Rendered when it is not there; what
    /// cannot be rendered is tried again the next time.
    std::filesystem::path ofEntry(const ShaderCatalog::Entry& entry);

    /// The file of what follows the desktop, named by its shader and look. Only one such file is
    /// kept: the one before is removed when another is rendered. `resolved` has a source.
    std::filesystem::path ofDesktop(const Resolved& resolved);

  private:
    bool takesFiles() const;
    void render(const Resolved& resolved, const std::filesystem::path& file);

    ShaderGPU& gpu_;
    const std::filesystem::path folder_;
};

} // namespace vantor
