#pragma once

#include "platform/images.h"

namespace vantor::darwin {

/// Core Graphics and Image I/O.
class DarwinImages : public Images {
  public:
    bool writePNG(const std::filesystem::path& file, const BGRAPixels& pixels) override;
    std::shared_ptr<const Image> read(const std::filesystem::path& file) override;
};

} // namespace vantor::darwin
