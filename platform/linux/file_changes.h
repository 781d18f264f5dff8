#pragma once
// Tells when a file is saved: in place, or by renaming another one over it, as many editors do; and
// when a folder comes or goes.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct inotify_event;

namespace vantor {

/// Watches folders, since a file that is replaced is another file under the same name. Main thread.
class FileChanges {
  public:
    /// Calls `changed` whenever the file may have another content, or none: it was closed by a
    /// writer, another one or a folder took its name, or it went away. A symbolic link's target is
    /// watched with it. When the folder itself goes, that is said, and a new watch is needed. The
    /// error is a sentence. The callback must not destroy the watch.
    static Result<std::unique_ptr<FileChanges>, std::string>
    watch(MainLoop& loop, const std::filesystem::path& file, std::function<void()> changed);

    FileChanges(const FileChanges&) = delete;
    FileChanges& operator=(const FileChanges&) = delete;

  private:
    struct Name {
        int folder = -1;
        std::filesystem::path file;
        bool operator==(const Name&) const = default;
    };

    FileChanges(std::filesystem::path file, std::function<void()> changed);
    /// False with errno set.
    bool addName(const std::filesystem::path& file);
    void addTarget();
    void readEvents();
    bool concerns(const inotify_event& event) const;

    std::filesystem::path file_;
    std::function<void()> changed_;
    FileDescriptor inotify_;
    /// What the file is called: its own name, and those of the files it was a link to.
    std::vector<Name> names_;
    std::unique_ptr<DescriptorWatch> ready_;
};

} // namespace vantor
