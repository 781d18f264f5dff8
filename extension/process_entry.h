#pragma once
// The process's main function, which is entered twice: first by the system's start of the process,
// then by the extension runtime that the first entry hands control to. Main thread only.

#include "platform/app_extension.h"

#include <functional>
#include <memory>

namespace vantor {

class Platform;

class ProcessEntry {
  public:
    using MakePrincipalObject = std::function<std::unique_ptr<AppExtension>()>;

    ProcessEntry(Platform& platform, MakePrincipalObject makePrincipalObject);

    /// The process's exit status. The second entry stops the process where the runtime cannot run.
    int run(int argc, char** argv);

  private:
    int handToRuntime(int argc, char** argv);
    int runExtension();

    Platform& platform_;
    const MakePrincipalObject makePrincipalObject_;
    bool entered_ = false;
};

} // namespace vantor
