#pragma once
// Tells when agent.toml may say something else.

#include "platform/linux/file_changes.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace vantor::agent {

/// Neither the file nor its folders need be there: the nearest folder that is there is watched
/// until they are. Main thread.
class ConfigurationWatch {
  public:
    /// Calls `changed` from the loop. It may come without a change, and may destroy the watch. The
    /// error is a sentence.
    static Result<std::unique_ptr<ConfigurationWatch>, std::string>
    create(MainLoop& loop, const std::filesystem::path& file, std::function<void()> changed);

    ConfigurationWatch(const ConfigurationWatch&) = delete;
    ConfigurationWatch& operator=(const ConfigurationWatch&) = delete;

  private:
    ConfigurationWatch(MainLoop& loop, std::filesystem::path file, std::function<void()> changed);
    Result<Done, std::string> follow();
    void somethingChanged();

    MainLoop& loop_;
    std::filesystem::path file_;
    std::function<void()> changed_;
    std::unique_ptr<FileChanges> changes_;
    bool isPosted_ = false;
    /// What was posted does nothing once this is gone.
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

} // namespace vantor::agent
