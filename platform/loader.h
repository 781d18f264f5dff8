#pragma once
// The dynamic loader.
//   Linux: dlsym and dlopen; a framework path of the system is looked up below the installed
//   lib/vantor system root, and the loaded framework registers its classes with the object runtime.
//   macOS: the same calls on the path as it stands.

#include "platform/result.h"

#include <memory>
#include <string>
#include <string_view>

namespace vantor {

/// A loaded framework; it stays loaded while this lives.
class LoadedFramework {
  public:
    virtual ~LoadedFramework() = default;
};

/// Any thread.
class Loader {
  public:
    virtual ~Loader() = default;

    /// The address of a symbol in the images that are loaded already, or null.
    virtual void* symbol(const char* name) = 0;

    /// Loads a framework's binary by its system path, binding lazily. On failure the error is the
    /// loader's own text.
    virtual Result<std::shared_ptr<LoadedFramework>, std::string>
    loadFramework(std::string_view path) = 0;
};

} // namespace vantor
