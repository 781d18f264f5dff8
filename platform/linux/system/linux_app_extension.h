#pragma once
// The extension runtime on Linux. The executable exports its process entry under the name
// kEntrySymbol; "NSExtensionMain" (exported by this file) confines the process and re-enters it.

#include "platform/app_extension.h"
#include "platform/linux/file_descriptor.h"
#include "platform/linux/launch/launch_wire.h"
#include "platform/linux/main_loop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantor {

class ObjectRuntime;

inline constexpr const char* kEntrySymbol = "VantorExtensionEntry";

/// Where the launch socket's records beside connections go. Main thread.
struct LaunchConsumers {
    /// The private socket of that remote context, or nothing when there is none.
    std::function<std::optional<FileDescriptor>(std::uint32_t contextID)> attach;
    std::function<void(std::span<const launch::ScreenRecord>)> screens;
    std::function<void(std::uint32_t displayID)> tick;
    /// Called once, before there is a connection, with what asks the agent to open an application;
    /// that may be called on any thread.
    std::function<void(std::function<void(const std::string& identifier)>)> openThrough;
    /// Called once likewise, with what tells the agent how fast a display's links run; main thread.
    std::function<void(std::function<void(std::uint32_t displayID, std::uint32_t frameRate)>)>
        tellLinksThrough;
};

class LinuxAppExtensionRuntime : public AppExtensionRuntime {
  public:
    LinuxAppExtensionRuntime(MainLoop& loop, const ObjectRuntime& runtime,
                             LaunchConsumers consumers);

    Result<Done, std::string>
    main(const std::function<std::unique_ptr<AppExtension>()>& makePrincipalObject) override;

  private:
    void connect(AppExtensionConfiguration& configuration, FileDescriptor socket);

    MainLoop& loop_;
    const ObjectRuntime& runtime_;
    LaunchConsumers consumers_;
    std::vector<std::weak_ptr<XPCConnection>> connections_;
};

} // namespace vantor
