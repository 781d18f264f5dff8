#include "platform/linux/system/linux_workspace.h"

#include <gio/gdesktopappinfo.h>
#include <memory>
#include <string>

namespace vantor {
namespace {

struct ObjectDeleter {
    void operator()(GDesktopAppInfo* info) const { g_object_unref(info); }
};
using AppInfo = std::unique_ptr<GDesktopAppInfo, ObjectDeleter>;

} // namespace

std::optional<std::filesystem::path>
LinuxWorkspace::applicationLocation(std::string_view bundleIdentifier) {
    const AppInfo info(
        g_desktop_app_info_new((std::string(bundleIdentifier) + ".desktop").c_str()));
    const char* file = info ? g_desktop_app_info_get_filename(info.get()) : nullptr;
    return file != nullptr ? std::optional<std::filesystem::path>(file) : std::nullopt;
}

void LinuxWorkspace::openApplication(const std::filesystem::path& location) {
    if (opener_) {
        opener_(location.stem());
        return;
    }
    const AppInfo info(g_desktop_app_info_new_from_filename(location.c_str()));
    if (info) {
        g_app_info_launch(G_APP_INFO(info.get()), nullptr, nullptr, nullptr);
    }
}

} // namespace vantor
