#pragma once
// The extension's bundle on Linux: the folder of the running program when it ends in ".appex".

#include "platform/bundle.h"

namespace vantor {

class PropertyListSerialization;

class LinuxBundle : public Bundle {
  public:
    /// Reads "Info.plist" in `folder` once. A folder without one is no bundle.
    LinuxBundle(std::filesystem::path folder, PropertyListSerialization& propertyLists);

    std::optional<std::string> identifier() const override { return identifier_; }
    std::optional<std::filesystem::path> resource(std::string_view name, std::string_view extension,
                                                  std::string_view subdirectory) const override;
    std::filesystem::path homeDirectory() const override;
    std::optional<std::filesystem::path> userDatabaseHome() const override;

  private:
    std::filesystem::path folder_;
    std::optional<std::string> identifier_;
};

} // namespace vantor
