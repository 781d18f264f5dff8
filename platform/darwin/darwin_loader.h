#pragma once

#include "platform/loader.h"

namespace vantor::darwin {

/// dlsym and dlopen.
class DarwinLoader : public Loader {
  public:
    void* symbol(const char* name) override;
    Result<std::shared_ptr<LoadedFramework>, std::string>
    loadFramework(std::string_view path) override;
};

} // namespace vantor::darwin
