#include "agent/configuration/configuration_watch.h"

#include "platform/linux/main_loop.h"

#include <system_error>
#include <utility>

namespace vantor::agent {
namespace {

/// The file, or the first folder above it that is missing: what can come next.
std::filesystem::path awaited(const std::filesystem::path& file) {
    std::filesystem::path next = file;
    std::error_code ignored;
    while (next.parent_path() != next.root_path() &&
           !std::filesystem::is_directory(next.parent_path(), ignored)) {
        next = next.parent_path();
    }
    return next;
}

} // namespace

ConfigurationWatch::ConfigurationWatch(MainLoop& loop, std::filesystem::path file,
                                       std::function<void()> changed)
    : loop_(loop), file_(std::move(file)), changed_(std::move(changed)) {}

Result<std::unique_ptr<ConfigurationWatch>, std::string>
ConfigurationWatch::create(MainLoop& loop, const std::filesystem::path& file,
                           std::function<void()> changed) {
    std::error_code ignored;
    std::unique_ptr<ConfigurationWatch> made(
        new ConfigurationWatch(loop, std::filesystem::absolute(file, ignored), std::move(changed)));
    if (const auto followed = made->follow(); !followed) {
        return Failure{followed.error()};
    }
    return made;
}

Result<Done, std::string> ConfigurationWatch::follow() {
    while (true) {
        const std::filesystem::path next = awaited(file_);
        auto changes = FileChanges::watch(loop_, next, [this] { somethingChanged(); });
        // What came or went while the watch was made is not waited for.
        if (next != awaited(file_)) {
            continue;
        }
        if (!changes) {
            return Failure{changes.error()};
        }
        changes_ = std::move(*changes);
        return Done{};
    }
}

void ConfigurationWatch::somethingChanged() {
    if (std::exchange(isPosted_, true)) {
        return;
    }
    // Not from within the watch that is about to be replaced.
    loop_.async([this, alive = std::weak_ptr(alive_)] {
        if (alive.expired()) {
            return;
        }
        isPosted_ = false;
        // Where nothing can be watched any more, the old watch is as good as none.
        static_cast<void>(follow());
        // The callback may destroy the watch.
        const auto changed = changed_;
        changed();
    });
}

} // namespace vantor::agent
