#pragma once
// Installed applications on Linux: desktop entries named after the bundle identifier.

#include "platform/workspace.h"

namespace vantor {

class LinuxWorkspace : public Workspace {
  public:
    std::optional<std::filesystem::path>
    applicationLocation(std::string_view bundleIdentifier) override;
    void openApplication(const std::filesystem::path& location) override;
};

} // namespace vantor
