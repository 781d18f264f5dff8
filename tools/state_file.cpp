#include "tools/state_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>
#include <unistd.h>

namespace vantor {
namespace {

/// Far above any state that displays can fill; a file beyond it is not ours.
constexpr std::uintmax_t kMaxFileBytes = 64U << 20U;

Failure<std::string> refuse(const std::filesystem::path& file, std::string_view why) {
    return Failure{file.string() + ": " + std::string(why)};
}

/// The dictionary under `key`, made when it is missing; null when something else stands there.
PropertyListDictionary* child(PropertyListDictionary& parent, std::string_view key) {
    const PropertyList* found = parent.find(key);
    if (found == nullptr) {
        parent.set(key, PropertyListDictionary{});
    } else if (found->dictionary() == nullptr) {
        return nullptr;
    }
    // The tree is ours to change; only the look-up is const.
    return const_cast<PropertyList*>(parent.find(key))->dictionary();
}

/// A temporary file that is gone again unless it was renamed into place.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::filesystem::path& target)
        : name_(target.string() + ".XXXXXX"), descriptor_(::mkstemp(name_.data())) {}
    ~TemporaryFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
            if (!renamed_) {
                ::unlink(name_.c_str());
            }
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// False with errno set.
    bool store(const Bytes& bytes, const std::filesystem::path& target) {
        if (descriptor_ < 0) {
            return false;
        }
        std::size_t written = 0;
        while (written < bytes.size()) {
            const ssize_t count =
                ::write(descriptor_, bytes.data() + written, bytes.size() - written);
            if (count < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return false;
            }
            written += static_cast<std::size_t>(count);
        }
        renamed_ = ::fsync(descriptor_) == 0 && std::rename(name_.c_str(), target.c_str()) == 0;
        return renamed_;
    }

  private:
    std::string name_;
    int descriptor_;
    bool renamed_ = false;
};

} // namespace

Result<StateFile, std::string> StateFile::read(PropertyListSerialization& propertyLists,
                                               const std::filesystem::path& file) {
    std::error_code status;
    const auto size = std::filesystem::file_size(file, status);
    if (status == std::errc::no_such_file_or_directory) {
        return StateFile{};
    }
    if (status) {
        return refuse(file, status.message());
    }
    if (size > kMaxFileBytes) {
        return refuse(file, "file of " + std::to_string(size) + " bytes exceeds the limit of " +
                                std::to_string(kMaxFileBytes));
    }
    std::ifstream stream(file, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream) {
        return refuse(file, "the file cannot be read");
    }
    auto parsed = propertyLists.read(bytes);
    if (!parsed) {
        return refuse(file, parsed.error().message);
    }
    StateFile state;
    if (PropertyListDictionary* root = parsed->dictionary()) {
        state.root_ = std::move(*root);
    } else {
        return refuse(file, "the property list is not a dictionary");
    }
    PropertyListDictionary* desktop = child(state.root_, "desktop");
    if (desktop == nullptr || child(*desktop, "displays") == nullptr) {
        return refuse(file, "\"desktop\" and \"displays\" are not dictionaries");
    }
    return state;
}

void StateFile::set(std::uint32_t display, DisplayChoice choice) {
    PropertyListDictionary* displays = child(*child(root_, "desktop"), "displays");
    PropertyListDictionary entry{{"id", std::move(choice.id)},
                                 {"source", std::move(choice.source)},
                                 {"look", std::move(choice.look)}};
    displays->set(std::to_string(display), std::move(entry));
}

Result<Done, std::string> StateFile::write(PropertyListSerialization& propertyLists,
                                           const std::filesystem::path& file) const {
    std::error_code status;
    std::filesystem::create_directories(file.parent_path(), status);
    if (status) {
        return refuse(file.parent_path(), status.message());
    }
    TemporaryFile temporary(file);
    if (!temporary.store(propertyLists.writeBinary(root_), file)) {
        return refuse(file, std::strerror(errno));
    }
    return Done{};
}

} // namespace vantor
