#include "platform/linux/system/linux_bundle.h"

#include "platform/linux/system/user_home.h"
#include "platform/property_list.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace vantor {
namespace {

std::optional<std::string> readIdentifier(const std::filesystem::path& file,
                                          PropertyListSerialization& propertyLists) {
    std::ifstream stream(file, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    auto parsed = propertyLists.read(bytes);
    if (!parsed || parsed->dictionary() == nullptr) {
        return std::nullopt;
    }
    const PropertyList* value = parsed->dictionary()->find("CFBundleIdentifier");
    if (value == nullptr || value->string() == nullptr) {
        return std::nullopt;
    }
    return *value->string();
}

} // namespace

LinuxBundle::LinuxBundle(std::filesystem::path folder, PropertyListSerialization& propertyLists)
    : folder_(std::move(folder)),
      identifier_(readIdentifier(folder_ / "Info.plist", propertyLists)) {}

std::optional<std::filesystem::path> LinuxBundle::resource(std::string_view name,
                                                           std::string_view extension,
                                                           std::string_view subdirectory) const {
    // An identifier names a file, never a way out of the folder.
    if (name.empty() || name.find('/') != std::string_view::npos) {
        return std::nullopt;
    }
    auto file =
        folder_ / "Resources" / subdirectory / (std::string(name) + "." + std::string(extension));
    std::error_code failed;
    if (!std::filesystem::is_regular_file(file, failed)) {
        return std::nullopt;
    }
    return file;
}

std::filesystem::path LinuxBundle::homeDirectory() const {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    return userDatabaseHome().value_or("/");
}

std::optional<std::filesystem::path> LinuxBundle::userDatabaseHome() const { return userHome(); }

} // namespace vantor
