#include "agent/host_application.h"

#include "agent/choices.h"
#include "platform/linux/system/user_home.h"
#include "platform/linux/whole_file.h"

#include <cstdint>

namespace vantor::agent {

const char* const kHostApplication = "com.nimbara.app";
const char* const kHostApplicationChanged = "com.nimbara.lockscreen.changed";

namespace {

constexpr const char* kStateFile =
    "Library/Containers/com.nimbara.app/Data/Library/Application Support/VantorEngine/"
    "LockScreen.plist";
constexpr std::size_t kMaxStateBytes = std::size_t{16} << 20;

/// FNV-1a, 64 bits (Fowler, Noll, Vo).
std::uint64_t hash(std::string_view bytes) {
    std::uint64_t value = 0xcbf29ce484222325;
    for (const char byte : bytes) {
        value = (value ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    }
    return value;
}

} // namespace

std::string fingerprintOf(std::string_view choice) {
    if (choice != kDefaultChoice) {
        return std::string(choice);
    }
    const auto home = userHome();
    auto state = readFile(home.value_or("") / kStateFile, kMaxStateBytes);
    return std::to_string(state && *state ? hash(**state) : 0);
}

} // namespace vantor::agent
