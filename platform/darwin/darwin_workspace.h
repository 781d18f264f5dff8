#pragma once

#include "platform/workspace.h"

namespace vantor::darwin {

/// NSWorkspace.
class DarwinWorkspace : public Workspace {
  public:
    std::optional<std::filesystem::path>
    applicationLocation(std::string_view bundleIdentifier) override;
    void openApplication(const std::filesystem::path& location) override;
};

} // namespace vantor::darwin
