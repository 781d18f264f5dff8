#include "platform/darwin/darwin_system.h"

#include "platform/darwin/foundation.h"

#include <pwd.h>
#include <unistd.h>

namespace vantor::darwin {

std::optional<std::string> DarwinBundle::identifier() const {
    NSString* identifier = NSBundle.mainBundle.bundleIdentifier;
    return identifier != nil ? std::optional(stdString(identifier)) : std::nullopt;
}

std::optional<std::filesystem::path> DarwinBundle::resource(std::string_view name,
                                                            std::string_view extension,
                                                            std::string_view subdirectory) const {
    // An identifier names a file, never a way out of the folder.
    if (name.empty() || name.find('/') != std::string_view::npos) {
        return std::nullopt;
    }
    NSURL* url = [NSBundle.mainBundle URLForResource:nsString(name)
                                       withExtension:nsString(extension)
                                        subdirectory:nsString(subdirectory)];
    return url != nil ? std::optional<std::filesystem::path>(url.fileSystemRepresentation)
                      : std::nullopt;
}

std::filesystem::path DarwinBundle::homeDirectory() const { return stdString(NSHomeDirectory()); }

std::optional<std::filesystem::path> DarwinBundle::userDatabaseHome() const {
    const passwd* entry = getpwuid(getuid());
    if (entry == nullptr || entry->pw_dir == nullptr || *entry->pw_dir == '\0') {
        return std::nullopt;
    }
    return entry->pw_dir;
}

} // namespace vantor::darwin
