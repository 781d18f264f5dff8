#pragma once
// A folder of a test's own, removed with all it holds by the process that made it (a death test's
// child leaves it to its parent).

#include <filesystem>

namespace vantor {

class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
    int owner_;
};

} // namespace vantor
