#pragma once
// Installed applications on Linux: desktop entries named after the bundle identifier.

#include "platform/workspace.h"

#include <functional>
#include <string>
#include <utility>

namespace vantor {

class LinuxWorkspace : public Workspace {
  public:
    /// Has applications opened by `opener`, which gets their identifier, instead of starting them
    /// itself. Before there is a second thread; the opener is called on any.
    void openThrough(std::function<void(const std::string& identifier)> opener) {
        opener_ = std::move(opener);
    }

    std::optional<std::filesystem::path>
    applicationLocation(std::string_view bundleIdentifier) override;
    void openApplication(const std::filesystem::path& location) override;

  private:
    std::function<void(const std::string&)> opener_;
};

} // namespace vantor
