#pragma once

#include "platform/bundle.h"

namespace vantor::darwin {

/// NSBundle, NSHomeDirectory and getpwuid.
class DarwinBundle : public Bundle {
  public:
    std::optional<std::string> identifier() const override;
    std::optional<std::filesystem::path> resource(std::string_view name, std::string_view extension,
                                                  std::string_view subdirectory) const override;
    std::filesystem::path homeDirectory() const override;
    std::optional<std::filesystem::path> userDatabaseHome() const override;
};

} // namespace vantor::darwin
