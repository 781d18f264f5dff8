#include "platform/linux/file_changes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace vantor {
namespace {

constexpr std::uint32_t kFolderWent = IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t kEvents =
    IN_CLOSE_WRITE | IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | kFolderWent;

/// Whether a file that was just made is still to be written, and closed, by whoever made it.
/// Folders and links are whole from the start.
bool awaitsItsWriter(const std::filesystem::path& file) {
    struct stat made {};
    return ::lstat(file.c_str(), &made) == 0 && S_ISREG(made.st_mode) && made.st_nlink == 1;
}

} // namespace

FileChanges::FileChanges(std::filesystem::path file, std::function<void()> changed)
    : file_(std::move(file)), changed_(std::move(changed)),
      inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

Result<std::unique_ptr<FileChanges>, std::string>
FileChanges::watch(MainLoop& loop, const std::filesystem::path& file,
                   std::function<void()> changed) {
    std::unique_ptr<FileChanges> made(new FileChanges(file, std::move(changed)));
    if (!made->inotify_ || !made->addName(file)) {
        return Failure{file.string() + ": cannot be watched: " + std::strerror(errno)};
    }
    made->addTarget();
    made->ready_ = loop.watch(made->inotify_.get(), EPOLLIN,
                              [self = made.get()](std::uint32_t) { self->readEvents(); });
    return made;
}

bool FileChanges::addName(const std::filesystem::path& file) {
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
    const int watched = inotify_add_watch(inotify_.get(), folder.c_str(), kEvents);
    if (watched < 0) {
        return false;
    }
    Name name{.folder = watched, .file = file};
    if (std::ranges::find(names_, name) == names_.end()) {
        names_.push_back(std::move(name));
    }
    return true;
}

void FileChanges::addTarget() {
    std::error_code status;
    const auto target = std::filesystem::canonical(file_, status);
    if (!status) {
        // What cannot be watched there is still seen at the link itself.
        static_cast<void>(addName(target));
    }
}

void FileChanges::readEvents() {
    alignas(inotify_event) std::array<char, 16 * (sizeof(inotify_event) + NAME_MAX + 1)> buffer;
    bool ours = false;
    for (;;) {
        const ssize_t count = ::read(inotify_.get(), buffer.data(), buffer.size());
        if (count <= 0) {
            break;
        }
        for (ssize_t at = 0; at < count;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            ours = ours || concerns(*event);
        }
    }
    if (ours) {
        addTarget();
        changed_();
    }
}

bool FileChanges::concerns(const inotify_event& event) const {
    if ((event.mask & (IN_Q_OVERFLOW | kFolderWent)) != 0) {
        return true;
    }
    const std::string_view name = event.len > 0 ? event.name : "";
    return std::ranges::any_of(names_, [&](const Name& each) {
        return each.folder == event.wd && each.file.filename() == name &&
               ((event.mask & IN_CREATE) == 0 || !awaitsItsWriter(each.file));
    });
}

} // namespace vantor
