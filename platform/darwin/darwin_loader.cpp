#include "platform/darwin/darwin_system.h"

#include <dlfcn.h>

namespace vantor::darwin {
namespace {

class OpenImage : public LoadedFramework {
  public:
    explicit OpenImage(void* handle) : handle_(handle) {}
    ~OpenImage() override { dlclose(handle_); }
    OpenImage(const OpenImage&) = delete;
    OpenImage& operator=(const OpenImage&) = delete;

  private:
    void* handle_;
};

} // namespace

void* DarwinLoader::symbol(const char* name) { return dlsym(RTLD_DEFAULT, name); }

Result<std::shared_ptr<LoadedFramework>, std::string>
DarwinLoader::loadFramework(std::string_view path) {
    void* handle = dlopen(std::string(path).c_str(), RTLD_LAZY);
    if (handle == nullptr) {
        const char* reason = dlerror();
        return Failure{std::string(reason != nullptr ? reason : "no reason is given")};
    }
    return std::shared_ptr<LoadedFramework>(std::make_shared<OpenImage>(handle));
}

} // namespace vantor::darwin
