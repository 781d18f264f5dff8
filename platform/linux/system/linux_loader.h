#pragma once
// The dynamic loader on Linux.

#include "platform/linux/archive/class_registrar.h"
#include "platform/loader.h"

#include <filesystem>

namespace vantor {

class LinuxLoader : public Loader {
  public:
    /// System paths are looked up below `systemRoot`; loaded frameworks register with `registrar`.
    LinuxLoader(std::filesystem::path systemRoot, ClassRegistrar& registrar);

    void* symbol(const char* name) override;
    Result<std::shared_ptr<LoadedFramework>, std::string>
    loadFramework(std::string_view path) override;

  private:
    std::filesystem::path systemRoot_;
    ClassRegistrar& registrar_;
};

} // namespace vantor
