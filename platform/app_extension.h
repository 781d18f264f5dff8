#pragma once
// The extension runtime: it owns the process's main function, constructs the principal object and
// hands every connection over.
//   Linux: own runtime exporting "NSExtensionMain"; takes the launch socket that the agent passed
//   (the LISTEN_FDS convention) and ends the process when the launching agent is gone.
//   macOS: NSExtensionMain and ExtensionFoundation through the Swift shim.

#include "platform/result.h"
#include "platform/xpc.h"

#include <functional>
#include <memory>
#include <string>

namespace vantor {

/// What the principal object gives the runtime.
class AppExtensionConfiguration {
  public:
    virtual ~AppExtensionConfiguration() = default;

    /// True when the connection is served. On any thread; a refused connection is closed by the
    /// runtime, a served one has been resumed.
    virtual bool accept(const std::shared_ptr<XPCConnection>& connection) = 0;

    /// A connection was turned away before it could be offered; the sentence says why. Never called
    /// where the system logs that itself (macOS).
    virtual void connectionRefused(const std::string& sentence) = 0;
};

/// The principal object; constructed once, on the main thread, never destroyed.
class AppExtension {
  public:
    virtual ~AppExtension() = default;
    virtual AppExtensionConfiguration& configuration() = 0;
};

/// The signature of "NSExtensionMain": it re-enters the process's main function.
using ExtensionMainFunction = int (*)(int argc, char** argv);

class AppExtensionRuntime {
  public:
    virtual ~AppExtensionRuntime() = default;

    /// The app-extension main: constructs the principal object, then accepts connections and runs
    /// the main loop. Returns when the launching agent is gone; an error says why it could not run.
    virtual Result<Done, std::string>
    main(const std::function<std::unique_ptr<AppExtension>()>& makePrincipalObject) = 0;
};

} // namespace vantor
