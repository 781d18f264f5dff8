#include "platform/linux/system/linux_app_extension.h"

#include "platform/linux/confinement/extension_rules.h"
#include "platform/linux/launch/launch_channel.h"
#include "platform/linux/system/linux_code_identity.h"
#include "platform/linux/system/linux_unified_log.h"
#include "platform/linux/system/system_root.h"
#include "platform/linux/system/user_home.h"
#include "platform/linux/system/xpc/bus_connection.h"
#include "platform/linux/system/xpc/xpc_wire.h"

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

    const auto channel = std::make_shared<launch::LaunchChannel>(
        loop_, std::move(*socket),
        launch::ChannelHandlers{
            .connect =
                [this, &extension](FileDescriptor connection) {
                    connect(extension.configuration(), std::move(connection));
                },
            .attach = consumers_.attach,
            .screens = consumers_.screens,
            .tick = consumers_.tick,
            .closed = [this](const std::string&) { loop_.stop(EXIT_SUCCESS); }});
    // An agent that cannot be asked is as good as gone, and its end is noticed by itself.
    consumers_.openThrough([weak = std::weak_ptr(channel)](const std::string& identifier) {
        if (const auto open = weak.lock()) {
            static_cast<void>(open->requestOpen(identifier));
        }
    });
    consumers_.tellLinksThrough(
        [weak = std::weak_ptr(channel)](std::uint32_t displayID, std::uint32_t frameRate) {
            if (const auto agent = weak.lock()) {
                agent->tellLinks(displayID, frameRate);
            }
        });
    if (const int status = loop_.run(); status != EXIT_SUCCESS) {
        return Failure{"the main loop ended with status " + std::to_string(status)};
    }
    return Done{};
}

void LinuxAppExtensionRuntime::connect(AppExtensionConfiguration& configuration,
                                       FileDescriptor socket) {
    std::erase_if(connections_, [](const auto& connection) { return connection.expired(); });
    if (connections_.size() >= xpc::kMaxConnections) {
        configuration.connectionRefused("a connection, for " +
                                        std::to_string(xpc::kMaxConnections) + " are served");
        return;
    }
    const auto made = xpc::makeBusConnection(std::move(socket), runtime_);
    if (!made) {
        configuration.connectionRefused("a connection, for its socket is of no use");
        return;
    }
    // A connection that is not accepted closes with its last reference.
    if (configuration.accept(made)) {
        connections_.push_back(made);
    }
}

namespace {

/// Gives up what an extension does not need, before it has a second thread.
void confineProcess() {
    LinuxCodeIdentity::rememberLauncher();
    const char* home = std::getenv("HOME");
    auto confined = confinement::confine(confinement::extensionRules(
        {.home = home != nullptr ? home : "",
         .userHome = userHome().value_or(""),
         // Not the whole prefix, which may be a user's own folder.
         .installation = {systemRoot(), runningProgram().parent_path()}}));
    if (!confined) {
        LinuxUnifiedLog()
            .logger("com.nimbara.vantor", "confinement")
            ->write("the extension is not confined: " + confined.error());
    }
}

} // namespace
} // namespace vantor

/// The runtime's own main function: it makes sure that an agent stands behind the launch, confines
/// the process, then re-enters the program.
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
    vantor::confineProcess();
    return reinterpret_cast<vantor::ExtensionMainFunction>(entry)(argc, argv);
}
