// Plays a peer on one connection, from the bytes of its messages to the handler that would carry
// them out. The first byte chooses: the rest is a stream as it stands, or the archives of one
// well-formed call, each behind its length, so that they get past the message's own frame.

#include "agent/kit/kit_classes.h"
#include "bridge/request_decoding.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/system/xpc/bus_connection.h"
#include "platform/linux/system/xpc/xpc_wire.h"
#include "tests/support/raw_bus.h"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <span>
#include <sys/socket.h>

namespace {

using namespace vantor;

/// Decodes arguments as the extension's handler does, and owes nothing.
class Decoding : public ExportedObject {
  public:
    void invoke(WallpaperOperation, std::vector<ObjectRef> arguments, Reply reply) override {
        for (const ObjectRef& argument : arguments) {
            if (argument) {
                decode(*argument);
            }
        }
        switch (reply.shape()) {
        case ReplyShape::objectAndError:
            return std::move(reply).sendObject(arguments.empty() ? nullptr : arguments.back());
        case ReplyShape::booleanAndError:
            return std::move(reply).sendBoolean(true);
        default:
            return std::move(reply).send(std::nullopt);
        }
    }

  private:
    static void decode(const Object& argument) {
        const ReflectedRef reflected = argument.reflect();
        PrivateBridge::firstUUID(reflected, 0);
        const auto creation = PrivateBridge::parseCreation(reflected);
        if (!(creation.size.width > 0) || !(creation.scale > 0)) {
            std::abort();
        }
        PrivateBridge::parseUpdate(reflected);
        static_cast<void>(argument.asString().value_or(argument.description()));
    }
};

/// A single event that two threads meet at.
class Ending {
  public:
    void reached() {
        const std::scoped_lock guard(lock_);
        isReached_ = true;
        changed_.notify_one();
    }
    void wait() {
        std::unique_lock guard(lock_);
        changed_.wait(guard, [this] { return isReached_; });
    }

  private:
    std::mutex lock_;
    std::condition_variable changed_;
    bool isReached_ = false;
};

const ClassRegistry& classes() {
    static const ClassRegistry& registry = *[] {
        auto* made = new ClassRegistry;
        agent::registerKitClasses(*made);
        return made;
    }();
    return registry;
}

ClassSet allowedClasses() {
    ClassSet allowed;
    for (const char* name :
         {"NSString", "NSNumber", "NSData", "NSArray", "NSDictionary", "NSURL", "NSError",
          "WallpaperIDXPC", "WallpaperCreationRequestXPC", "WallpaperUpdateRequestXPC",
          "WallpaperContentTypeSetXPC", "WallpaperChoiceIDXPC", "WallpaperDebugRequestXPC"}) {
        allowed.push_back(classes().classNamed(name));
    }
    return allowed;
}

XPCInterface exportedInterface() {
    XPCInterface exported(kWallpaperProtocolName);
    for (const ArgumentSlot& slot : wallpaperArgumentSlots()) {
        exported.setClasses(allowedClasses(), slot);
    }
    return exported;
}

/// The call that the bytes stand for: an operation, then each argument behind two bytes of length.
Bytes wellFormedCall(std::span<const std::uint8_t> data) {
    const auto& operation = wallpaperOperations()[data.empty() ? 0 : data[0] % 21U];
    data = data.subspan(std::min<std::size_t>(data.size(), 1));
    rawbus::MethodCall call{.interface = xpc::kWallpaperInterface,
                            .member = xpc::memberOf(operation.selector)};
    for (int i = 0; i < operation.argumentCount; ++i) {
        std::size_t size = 0;
        if (data.size() >= 2) {
            size = data[0] + std::size_t{256} * data[1];
            data = data.subspan(2);
        }
        const auto argument = data.first(std::min(size, data.size()));
        call.arguments.emplace_back(argument.begin(), argument.end());
        data = data.subspan(argument.size());
    }
    return rawbus::marshal(call);
}

void writeAll(int socket, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(sent));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::span<const std::uint8_t> rest(data + 1, size - 1);
    const Bytes message = data[0] % 4 == 0 ? Bytes(rest.begin(), rest.end()) : wellFormedCall(rest);
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        std::abort();
    }
    const FileDescriptor peer(ends[0]);
    Ending ending;
    {
        const auto connection = xpc::makeBusConnection(FileDescriptor(ends[1]), classes());
        connection->setExportedInterface(exportedInterface());
        connection->setExportedObject(std::make_shared<Decoding>());
        connection->setInvalidationHandler([&ending] { ending.reached(); });
        connection->setRefusalHandler([](const std::string& sentence) {
            if (sentence.empty()) {
                std::abort();
            }
        });
        connection->resume();
    }
    writeAll(peer.get(), rawbus::authentication());
    writeAll(peer.get(), message);
    shutdown(peer.get(), SHUT_WR);
    std::uint8_t room[4096];
    while (recv(peer.get(), room, sizeof(room), 0) > 0) {
    }
    ending.wait();
    return 0;
}
