#include "platform/linux/system/linux_loader.h"

#include <dlfcn.h>

namespace vantor {
namespace {

/// The folder that all of the system's frameworks stand below.
constexpr std::string_view kSystemLibrary = "/System/Library/";

class LoadedImage : public LoadedFramework {
  public:
    explicit LoadedImage(void* handle) : handle_(handle) {}
    // Its classes stay registered for the life of the process, so the image is never unloaded.
    void* handle() const { return handle_; }

  private:
    void* handle_;
};

std::string loaderMessage() {
    const char* message = dlerror();
    return message != nullptr ? message : "unknown failure";
}

} // namespace

LinuxLoader::LinuxLoader(std::filesystem::path systemRoot, ClassRegistrar& registrar)
    : systemRoot_(std::move(systemRoot)), registrar_(registrar) {}

void* LinuxLoader::symbol(const char* name) { return dlsym(RTLD_DEFAULT, name); }

Result<std::shared_ptr<LoadedFramework>, std::string>
LinuxLoader::loadFramework(std::string_view path) {
    const std::filesystem::path file = path.starts_with(kSystemLibrary)
                                           ? systemRoot_ / path.substr(kSystemLibrary.size())
                                           : std::filesystem::path(path);
    void* handle = dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr) {
        return Failure{loaderMessage()};
    }
    auto image = std::make_shared<LoadedImage>(handle);
    if (void* found = dlsym(image->handle(), kRegisterFrameworkClassesSymbol)) {
        reinterpret_cast<RegisterFrameworkClasses>(found)(&registrar_);
    }
    return std::shared_ptr<LoadedFramework>(std::move(image));
}

} // namespace vantor
