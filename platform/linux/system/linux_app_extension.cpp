#include "platform/linux/system/linux_app_extension.h"

#include "platform/linux/launch/launch_channel.h"
#include "platform/linux/system/xpc/bus_connection.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

namespace vantor {

LinuxAppExtensionRuntime::LinuxAppExtensionRuntime(MainLoop& loop, const ObjectRuntime& runtime,
                                                   LaunchConsumers consumers)
    : loop_(loop), runtime_(runtime), consumers_(std::move(consumers)) {}

Result<Done, std::string> LinuxAppExtensionRuntime::main(
    const std::function<std::unique_ptr<AppExtension>()>& makePrincipalObject) {
    std::optional<FileDescriptor> socket = launch::LaunchChannel::takeFromEnvironment();
    if (!socket) {
        return Failure{std::string("no launch socket was passed")};
    }
    // Released on purpose: the principal object and what it observes live as long as the process.
    AppExtension& extension = *makePrincipalObject().release();

    const auto connect = [this, &extension](FileDescriptor connection) {
        const auto made = xpc::makeBusConnection(std::move(connection), runtime_);
        // A connection that is refused, or cannot be made, closes with its last reference.
        if (made) {
            static_cast<void>(extension.configuration().accept(made));
        }
    };
    const launch::LaunchChannel channel(
        loop_, std::move(*socket),
        {.connect = connect,
         .attach = consumers_.attach,
         .screens = consumers_.screens,
         .tick = consumers_.tick,
         .closed = [this](const std::string&) { loop_.stop(EXIT_SUCCESS); }});
    if (const int status = loop_.run(); status != EXIT_SUCCESS) {
        return Failure{"the main loop ended with status " + std::to_string(status)};
    }
    return Done{};
}

} // namespace vantor

/// The runtime's own main function: it makes sure that an agent stands behind the launch, then
/// re-enters the program.
extern "C" __attribute__((visibility("default"))) int NSExtensionMain(int argc, char** argv) {
    if (std::getenv("LISTEN_FDS") == nullptr) {
        std::fprintf(stderr,
                     "%s is started by the wallpaper agent, not by hand: see vantor-agent\n",
                     argc > 0 ? argv[0] : "this program");
        return EXIT_FAILURE;
    }
    void* const entry = dlsym(RTLD_DEFAULT, vantor::kEntrySymbol);
    if (entry == nullptr) {
        std::fprintf(stderr, "the program does not export %s\n", vantor::kEntrySymbol);
        return EXIT_FAILURE;
    }
    return reinterpret_cast<vantor::ExtensionMainFunction>(entry)(argc, argv);
}
